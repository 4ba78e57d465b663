// A window application that says that it is alive: to the descriptor that it is given, with its first keep-alive.
#include <corvane/Window.h>
#include <corvane/WindowExec.h>
#include <string>
#include <unistd.h>

namespace
{

class StartWindow : public Corvane::Window
{
public:
    StartWindow(int argc, char** argv) : Window(argc, argv), news(std::stoi(argv[1])) {}

    void onKeepAlive(const std::string& uid, const std::string& state) override
    {
        Window::onKeepAlive(uid, state);
        if (write(news, "!", 1) != 1)
            _exit(1);
    }

    void init() override
    {
        Window::init();
        setState(STATE_RUNNING);
    }
    void bringToFront() override {}
    void sendToBack() override {}
    void bringForward() override {}
    void sendBackward() override {}
    std::string getTitle() const override { return "start"; }

private:
    const int news;
};

} // namespace

int main(int argc, char** argv)
{
    Corvane::WindowExec exec(argc, argv);
    StartWindow window(argc, argv);
    exec.run(&window);
}
