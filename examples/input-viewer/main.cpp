#include <corvane/Window.h>
#include <corvane/WindowExec.h>
#include <corvane/input/KeyNames.h>
#include <cstdlib>
#include <iostream>

/// Prints every input event that it gets, in words: what a remote control, a keyboard or a mouse gives an application.
///
///     CORVANE_WINDOWEXEC_STANDALONE=1 input-viewer --application-type=viewer
namespace
{

using Corvane::IWindowEvent;
using MouseEvent = IWindowEvent::MouseEvent;

const char* word(bool isPressed)
{
    return isPressed ? "pressed" : "released";
}

void show(const IWindowEvent::KeyEvent& event)
{
    std::cout << "key " << event.getKeyCode() << " " << Corvane::findKeyName(event.getKeyCode()) << " "
              << word(event.getPressed()) << std::endl;
}

void show(const IWindowEvent::AsciiEvent& event)
{
    std::cout << "character '" << event.getAsciiCode() << "' " << word(event.getPressed()) << std::endl;
}

void show(const MouseEvent& event)
{
    const MouseEvent::Buttons buttons = event.getButtons();
    std::cout << "mouse";
    if (buttons.getHasLeftChanged())
        std::cout << ", left " << word(buttons.getIsLeftPressed());
    if (buttons.getHasMiddleChanged())
        std::cout << ", middle " << word(buttons.getIsMiddlePressed());
    if (buttons.getHasRightChanged())
        std::cout << ", right " << word(buttons.getIsRightPressed());
    const MouseEvent::Position place = event.getPosition();
    if (event.getHasPosition())
        std::cout << ", at " << place.getX() << "," << place.getY();
    const MouseEvent::Movement movement = event.getMovement();
    if (event.getHasMovement())
        std::cout << ", moved by " << movement.getDeltaX() << "," << movement.getDeltaY() << ", wheel "
                  << movement.getDeltaZ();
    std::cout << std::endl;
}

class ViewerWindow : public Corvane::Window
{
public:
    using Window::Window;

    std::string getTitle() const override { return "Input viewer"; }
    void init() override
    {
        Window::init();
        setState(STATE_RUNNING);
    }
    void terminate() override { setState(STATE_TERMINATED); }

    /// Called on the thread of the input driver, and on that of the control server for an event of `corvanectl key`.
    bool handleEvent(const Corvane::Event& event) override
    {
        const std::string type = event.getTypeName();
        if (type == IWindowEvent::KeyEvent::TYPE_NAME)
            show(dynamic_cast<const IWindowEvent::KeyEvent&>(event));
        else if (type == IWindowEvent::AsciiEvent::TYPE_NAME)
            show(dynamic_cast<const IWindowEvent::AsciiEvent&>(event));
        else if (type == MouseEvent::TYPE_NAME)
            show(dynamic_cast<const MouseEvent&>(event));
        return true;
    }

    void bringToFront() override {}
    void sendToBack() override {}
    void bringForward() override {}
    void sendBackward() override {}
};

} // namespace

int main(int argc, char** argv)
{
    if (std::getenv("CORVANE_WINDOWEXEC_STANDALONE") == nullptr)
        std::cerr << "input-viewer: devices are silent until a manager gives the focus; to enable them at once, set "
                     "CORVANE_WINDOWEXEC_STANDALONE\n";
    Corvane::WindowExec exec(argc, argv);
    ViewerWindow window(argc, argv);
    exec.run(&window);
}
