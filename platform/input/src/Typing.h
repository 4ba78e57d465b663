#pragma once

#include <optional>
#include <string>

namespace Corvane
{

/// What the keys of one keyboard type in its layout: it keeps which keys are down, and the dead key that waits for its
/// letter. Not synchronised.
class Typing
{
public:
    virtual ~Typing() = default;

    /// A key was pressed, or repeats; setDown() follows when it was not down.
    /// @param code  a KEY_ code of Linux
    /// @return what it types, in UTF-8; an empty text when it is a command; nothing when it waits for the next key
    virtual std::optional<std::string> type(unsigned int code, bool isCapsLocked) = 0;
    /// Whether the key is the one for Caps Lock, with what is held now.
    virtual bool isCapsLock(unsigned int code) const = 0;
    virtual void setDown(unsigned int code, bool isDown) = 0;
    /// Forgets the dead key that waits.
    virtual void forgetDeadKey() = 0;
};

} // namespace Corvane
