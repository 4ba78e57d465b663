#include <corvane/Window.h>
#include <corvane/WindowExec.h>
#include <iostream>

struct HelloWindow : Corvane::Window {
    using Window::Window;
    std::string getTitle() const override { return "Hello"; }
    void init() override
    {
        Window::init();
        setState(STATE_RUNNING);
    }
    void terminate() override { setState(STATE_TERMINATED); }
    bool handleEvent(const Corvane::Event& event) override { return bool(std::cout << event.serialize() << std::endl); }
    void bringToFront() override {}
    void sendToBack() override {}
    void bringForward() override {}
    void sendBackward() override {}
};

int main(int argc, char** argv)
{
    Corvane::WindowExec exec(argc, argv); // first, so that it outlives the window that it listens to
    HelloWindow window(argc, argv);
    exec.run(&window);
}
