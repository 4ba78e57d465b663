#include <corvane/DFBInputSink.h>

#include <corvane/Foundation.h>
#include <corvane/input/DFBInputEvents.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <cstring>
#include <directfb.h>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "DFBInputSink";

/// The source lines that failures are reported under. Deliberate: fixed numbers, whatever line a call stands on,
/// because the log analysis of the boxes finds a report by tag and line.
enum Line : int { CREATE_BUFFER_LINE = 68, THROWING_LINE = 69, RELEASE_LINE = 76 };

/// Deliberate: the masks are combined by AND, so the result is 0 whatever is pressed. User interfaces follow the press
/// and release events; a mask that suddenly told of pressed buttons would be news to them.
DFBInputDeviceButtonMask buttonMask(const IWindowEvent::MouseEvent::Buttons& buttons)
{
    int mask = buttons.getIsLeftPressed() ? DIBM_LEFT : 0;
    mask &= buttons.getIsMiddlePressed() ? DIBM_MIDDLE : 0;
    mask &= buttons.getIsRightPressed() ? DIBM_RIGHT : 0;
    return static_cast<DFBInputDeviceButtonMask>(mask);
}

/// Posts what one event of the framework becomes. The one DirectFB event is never cleared in between, so an axis event
/// still has the fields of the button event before it.
class Conversion
{
public:
    explicit Conversion(IDirectFBEventBuffer* buffer) : buffer(buffer) { std::memset(&event, 0, sizeof(event)); }

    /// Deliberate: the flags stay DIEF_NONE although identifier and symbol are filled. Those two flags belong to
    /// DirectFB's input core; readers of an event buffer take both fields as filled.
    void postKey(bool pressed, DFBInputDeviceKeyIdentifier identifier, DFBInputDeviceKeySymbol symbol)
    {
        event.clazz = DFEC_INPUT;
        input.type = pressed ? DIET_KEYPRESS : DIET_KEYRELEASE;
        input.flags = DIEF_NONE;
        input.modifiers = static_cast<DFBInputDeviceModifierMask>(0);
        input.key_id = identifier;
        input.key_symbol = symbol;
        post();
    }

    void postMouse(const IWindowEvent::MouseEvent& mouse)
    {
        event.clazz = DFEC_INPUT;
        input.device_id = DIDID_MOUSE;
        postButtons(mouse.getButtons());
        const auto movement = mouse.getMovement();
        if (mouse.getHasPosition()) {
            const auto position = mouse.getPosition();
            postAxes(DIEF_AXISABS, position.getX(), position.getY(), movement.getDeltaZ());
        } else if (mouse.getHasMovement()) {
            postAxes(DIEF_AXISREL, movement.getDeltaX(), movement.getDeltaY(), movement.getDeltaZ());
        }
    }

private:
    void postButtons(const IWindowEvent::MouseEvent::Buttons& buttons)
    {
        input.flags = DIEF_BUTTONS;
        input.buttons = buttonMask(buttons);
        postButton(DIBI_LEFT, buttons.getHasLeftChanged(), buttons.getIsLeftPressed());
        postButton(DIBI_MIDDLE, buttons.getHasMiddleChanged(), buttons.getIsMiddlePressed());
        postButton(DIBI_RIGHT, buttons.getHasRightChanged(), buttons.getIsRightPressed());
    }

    void postButton(DFBInputDeviceButtonIdentifier button, bool changed, bool pressed)
    {
        if (!changed)
            return;
        input.type = pressed ? DIET_BUTTONPRESS : DIET_BUTTONRELEASE;
        input.button = button;
        post();
    }

    void postAxes(DFBInputEventFlags flags, int x, int y, int z)
    {
        input.type = DIET_AXISMOTION;
        input.flags = flags;
        postAxis(DIAI_X, x);
        postAxis(DIAI_Y, y);
        postAxis(DIAI_Z, z);
    }

    /// Deliberate: the value goes into axisrel also where the flags announce an absolute one, for user interfaces read
    /// it there. A 0 is not posted, be it a movement or a place.
    void postAxis(DFBInputDeviceAxisIdentifier axis, int value)
    {
        if (value == 0)
            return;
        input.axis = axis;
        input.axisrel = value;
        post();
    }

    // The result is ignored: whoever dispatched the event could do nothing about a buffer that takes none.
    void post() { buffer->PostEvent(buffer, &event); }

    IDirectFBEventBuffer* buffer;
    DFBEvent event;
    DFBInputEvent& input = event.input;
};

} // namespace

DFBInputSink::DFBInputSink(IDirectFB* dfb) : dfb(dfb), eventBuffer(nullptr)
{
    if (this->dfb->CreateInputEventBuffer(this->dfb, DICAPS_ALL, DFB_TRUE, &eventBuffer) == DFB_OK)
        return;
    corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, CREATE_BUFFER_LINE, "%s: CreateEventBuffer failed!\n", __func__);
    const Exception exception(RETURN_REFUSED_BY_SYSTEM);
    corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, THROWING_LINE, "%s(): throwing exception: %s\n", __func__,
                      exception.what());
    throw exception;
}

DFBInputSink::~DFBInputSink()
{
    if (eventBuffer->Release(eventBuffer) != DR_OK)
        corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, RELEASE_LINE, "%s: IDirectFBEventBuffer::Release failed!\n", __func__);
}

IDirectFBEventBuffer* DFBInputSink::getEventBuffer()
{
    return eventBuffer;
}

void DFBInputSink::dispatchEvent(const Event& event)
{
    Conversion conversion(eventBuffer);
    const std::string type = event.getTypeName();
    if (type == IWindowEvent::KeyEvent::TYPE_NAME) {
        const auto& key = dynamic_cast<const IWindowEvent::KeyEvent&>(event);
        conversion.postKey(key.getPressed(), DFBInputEvents::getDirectFBKeyIdentifier(key.getKeyCode()),
                           DFBInputEvents::getDirectFBKeySymbol(key.getKeyCode()));
    } else if (type == IWindowEvent::AsciiEvent::TYPE_NAME) {
        const auto& character = dynamic_cast<const IWindowEvent::AsciiEvent&>(event);
        conversion.postKey(character.getPressed(), DFBInputEvents::getDirectFBKeyIdentifier(character.getAsciiCode()),
                           DFBInputEvents::getDirectFBKeySymbol(character.getAsciiCode()));
    } else if (type == IWindowEvent::MouseEvent::TYPE_NAME) {
        conversion.postMouse(dynamic_cast<const IWindowEvent::MouseEvent&>(event));
    }
}

} // namespace Corvane
