#pragma once

#include <corvane/interfaces/ISurfaceCompositing.h>
#include <cstdint>

namespace Corvane
{

/// The mouse pointer of a screen.
class CORVANE_EXPORT ICursor : public virtual ISurfaceCompositing
{
public:
    /// What the pointer shows. Any 32-bit value is allowed; a new cursor holds CURSOR_STATE_NORMAL.
    enum CursorState : std::uint32_t { CURSOR_STATE_HIDDEN = 0, CURSOR_STATE_BUSY = 1, CURSOR_STATE_NORMAL = 2 };

    /// The session index of the operations that are given none.
    static constexpr unsigned int ANY_SESSION = 0xDEADBEEF;

    using ISurfaceCompositing::getLocation;
    using ISurfaceCompositing::getOpacity;
    using ISurfaceCompositing::getVisibility;
    using ISurfaceCompositing::setLocation;
    using ISurfaceCompositing::setOpacity;
    using ISurfaceCompositing::setVisibility;

    /// @return true when locations are coordinates of the screen, false when they are relative to the window
    virtual bool isCursorGlobal() = 0;
    virtual void setCursorState(const CursorState& state) = 0;
    virtual CursorState getCursorState() = 0;

    virtual void setVisibility(bool visibility) { setVisibility(ANY_SESSION, visibility); }
    virtual bool getVisibility() { return getVisibility(ANY_SESSION); }
    /// Deliberate: takes and gives a bool, so the opacity becomes 1 or 0, and reads as "not 0".
    virtual void setOpacity(bool opacity) { setOpacity(ANY_SESSION, static_cast<unsigned int>(opacity)); }
    virtual bool getOpacity() { return getOpacity(ANY_SESSION) != 0; }
    virtual void setLocation(const Rect& location) { setLocation(ANY_SESSION, location); }
    virtual Rect getLocation() { return getLocation(ANY_SESSION); }
};

} // namespace Corvane
