// A window of the box: the process manager grants it a surface and composes it.
//
// It needs a process manager (corvane-procmand). Start it through that, or by hand beside it:
//     corvanectl launch --type demo --location 100,50,640,360 box-window
#include <corvane/TekloWindow.h>
#include <corvane/WindowExec.h>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/Exception.h>
#include <iostream>

namespace
{

class BoxWindow : public Corvane::TekloWindow
{
public:
    using TekloWindow::TekloWindow;

    std::string getTitle() const override { return "Box"; }

    void init() override
    {
        TekloWindow::init();
        std::cout << "surface " << getClientId() << " is mine" << std::endl;
        setState(STATE_RUNNING);
    }

    // Each request is fulfilled at once, for there is nothing to load or to save here.
    void activate() override
    {
        TekloWindow::activate();
        setState(STATE_RUNNING);
    }
    void suspend() override
    {
        TekloWindow::suspend();
        setState(STATE_SUSPENDED);
    }
    void terminate() override { setState(STATE_TERMINATED); }
};

} // namespace

int main(int argc, char** argv)
{
    try {
        Corvane::WindowExec exec(argc, argv); // first, so that it outlives the window that it listens to
        BoxWindow window(argc, argv);
        exec.run(&window);
        return 0;
    } catch (const Corvane::Exception& exception) {
        std::cerr << "box-window: " << exception.what() << std::endl;
    } catch (const std::exception& exception) {
        std::cerr << "box-window: " << exception.what() << std::endl;
    }
    return 1;
}
