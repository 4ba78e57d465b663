#include "BrokenHeap.h"
#include "PlainWindow.h"

#include <corvane/WindowExec.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>

namespace Corvane::Test
{

namespace
{

/// A window that runs until it is told to terminate, and dies in the way that a key event asks for.
class DrivenWindow : public PlainWindow
{
public:
    using PlainWindow::PlainWindow;
    using PlainWindow::terminate;

    void init() override
    {
        PlainWindow::init();
        setState(STATE_RUNNING);
    }
    void run() override
    {
        std::puts("running"); // and everything that runs beside the main loop has been started
        std::fflush(stdout);
        PlainWindow::run();
    }
    void terminate() override
    {
        PlainWindow::terminate();
        setState(STATE_TERMINATED);
    }
    using PlainWindow::handleEvent;
    bool handleEvent(const Event& event) override
    {
        std::printf("event %s\n", event.SerialObject::serialize().c_str());
        std::fflush(stdout);
        if (event.getTypeName() != IWindowEvent::KeyEvent::TYPE_NAME)
            return false;
        const auto& key = dynamic_cast<const IWindowEvent::KeyEvent&>(event);
        if (key.getPressed())
            die(static_cast<int>(key.getKeyCode()));
        return true;
    }

private:
    /// @param way  a signal to die of, or that plus 1000 to get it inside malloc; anything else: live on
    static void die(int way)
    {
        if (way == SIGSEGV) {
            // A page that nobody may write. A null pointer would do, but a sanitizer sees that one coming.
            void* page = mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            *static_cast<volatile char*>(page) = 1;
        }
        if (way == SIGABRT)
            std::abort();
        if (way == SIGTERM || way == SIGBUS || way == SIGILL || way == SIGFPE)
            std::raise(way);
#ifdef BREAKABLE_HEAP
        if (way > 1000)
            raiseInsideMalloc(way - 1000);
#endif
    }
};

} // namespace

} // namespace Corvane::Test

int main(int argc, char** argv)
{
    Corvane::WindowExec exec(argc, argv);
    Corvane::Test::DrivenWindow window(argc, argv);
    exec.run(&window);
}
