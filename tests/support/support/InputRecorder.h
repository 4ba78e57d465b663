#pragma once

#include <corvane/interfaces/IWindowEvent.h>
#include <string>
#include <support/Await.h>
#include <support/EventText.h>
#include <vector>

namespace Corvane::Test
{

using Texts = std::vector<std::string>;

/// Keeps what it hears, in words.
class InputRecorder : public virtual IWindowEvent::IInputEventListener
{
public:
    int onInputEvent(const IWindowEvent::InputEvent& event) override
    {
        events.put(eventText(event));
        return 0;
    }

    /// @return the next event; "nothing" when none comes
    std::string take()
    {
        std::string text = "nothing";
        events.take(text);
        return text;
    }
    Texts take(std::size_t count)
    {
        Texts texts;
        for (std::size_t i = 0; i < count; ++i)
            texts.push_back(take());
        return texts;
    }

    Mailbox<std::string> events;
};

} // namespace Corvane::Test
