#include "BrokenHeap.h"
#include "PlainWindow.h"
#include "StruckSend.h"

#include <corvane/WindowExec.h>
#include <csignal>
#include <cstdio>
#include <thread>

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
    /// @param way  a signal to die of; that plus 1000 to get it inside malloc, plus 2000 in the middle of the next
    /// message, plus 3000 for a fault there, plus 4000 to get it on another thread in the middle of a notification;
    /// anything else: live on
    void die(int way)
    {
        const int signal = way % 1000;
        switch (way / 1000) {
        case 0:
            dieNow(signal);
            break;
#ifdef BREAKABLE_HEAP
        case 1:
            raiseInsideMalloc(signal);
            break;
#endif
        case 2:
            strikeNextSend(signal);
            break;
        case 3:
            faultInNextSend(signal);
            break;
        case 4:
            std::thread([this, signal] { dieWhileNotifying(signal); }).join();
            break;
        default:
            break;
        }
    }

    static void dieNow(int signal)
    {
        if (signal == SIGABRT || signal == SIGSEGV)
            fault(signal);
        if (signal == SIGTERM || signal == SIGBUS || signal == SIGILL || signal == SIGFPE)
            std::raise(signal);
    }

    void dieWhileNotifying(int signal)
    {
        // The thread that this one inherits its mask from is the library's, and holds signals from outside off.
        sigset_t none;
        sigemptyset(&none);
        pthread_sigmask(SIG_SETMASK, &none, nullptr);
        strikeNextSend(signal);
        setOpacity(1);
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
