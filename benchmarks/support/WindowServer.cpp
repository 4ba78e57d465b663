// A window application that lives until it is killed.
//
//     window-server LISTENERS --application-type=TYPE --authorization-token=UID
//
// LISTENERS hear everything in this process and do nothing.
#include <corvane/APPRPCServer.h>
#include <corvane/Window.h>
#include <deque>
#include <string>

namespace
{

using namespace Corvane;

constexpr unsigned int CONNECTION_LIMIT = 256;

class BenchmarkWindow : public Window
{
public:
    using Window::Window;
    void bringToFront() override {}
    void sendToBack() override {}
    void bringForward() override {}
    void sendBackward() override {}
    std::string getTitle() const override { return "benchmark"; }
};

/// Hears everything and does nothing.
class IdleListener : public virtual IWindow::IWindowListener
{
public:
    void onKeepAlive(const std::string&, const std::string&) override {}
    void onStateChange(const std::string&, const std::string&, const std::string&) override {}
    void onFocusChange(const std::string&, const bool&, const bool&) override {}
    void onVisibilityChange(const std::string&, const bool&, const bool&) override {}
    void onOpacityChange(const std::string&, const unsigned int&, const unsigned int&) override {}
    void onZOrderChange(const std::string&, const unsigned int&, const unsigned int&) override {}
    void onLocationChange(const std::string&, const ISurfaceCompositing::Rect&,
                          const ISurfaceCompositing::Rect&) override
    {
    }
};

} // namespace

int main(int argc, char** argv)
{
    BenchmarkWindow window(argc, argv);
    std::deque<IdleListener> listeners(std::stoul(argv[1]));
    for (IdleListener& listener : listeners)
        window.addListener(&listener);
    APPRPCServer server(&window);
    server.setConnectionLimit(CONNECTION_LIMIT);
    server.init();
    window.init();
    window.run();
}
