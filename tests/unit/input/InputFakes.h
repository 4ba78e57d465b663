#pragma once

#include <corvane/input/MultiInputDriver.h>
#include <functional>
#include <memory>
#include <support/Await.h>
#include <thread>

namespace Corvane::Test
{

using KeyEvent = IWindowEvent::KeyEvent;

inline std::shared_ptr<const KeyEvent> key(KeyEvent::Code code)
{
    return std::make_shared<const KeyEvent>(code, true);
}

/// Keeps what it hears, and does what the test wants in its call.
class RecordingInputListener : public virtual IWindowEvent::IInputEventListener
{
public:
    struct Heard {
        KeyEvent::Code code;
        std::thread::id thread;
    };

    int onInputEvent(const IWindowEvent::InputEvent& event) override
    {
        const auto& keyEvent = dynamic_cast<const KeyEvent&>(event);
        heard.put({keyEvent.getKeyCode(), std::this_thread::get_id()});
        if (action)
            action(keyEvent.getKeyCode());
        return 0;
    }

    /// @return the code of the next key, 0 when none came
    KeyEvent::Code takeCode()
    {
        Heard next{};
        heard.take(next);
        return next.code;
    }

    Mailbox<Heard> heard;
    std::function<void(KeyEvent::Code)> action;
};

} // namespace Corvane::Test
