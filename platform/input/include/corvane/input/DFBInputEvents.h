#pragma once

#include <corvane/interfaces/IWindowEvent.h>
#include <directfb_keyboard.h>

namespace Corvane
{

/// What the keys of input events are called in DirectFB. Part of the library only where it is built with DirectFB.
///
/// A key's identifier says which key of a US keyboard it is, whatever is held besides; its symbol says what it means.
/// Keys of remote controls mostly have a symbol only. A key that DirectFB has no symbol for has the nearest one, as
/// Menu for KEY_ROOT_MENU. All others have symbols of their own, from DFB_CUSTOM_KEY(0) on; their numbers do not
/// change, but an application better compares a symbol with what these functions return for the key. Thread-safe, does
/// not block.
///
///     DFBInputEvents::getDirectFBKeySymbol(IWindowEvent::KeyEvent::Code(KEY_OK)); // DIKS_OK
class CORVANE_EXPORT DFBInputEvents
{
public:
    /// @param code  a KEY_ code of Linux
    /// @return DIKI_UNKNOWN for a code without counterpart
    static DFBInputDeviceKeyIdentifier getDirectFBKeyIdentifier(IWindowEvent::KeyEvent::Code code);
    /// @param ascii  an ASCII code
    /// @return the key of a US keyboard that types the character, with Shift or without; DIKI_UNKNOWN where none does
    static DFBInputDeviceKeyIdentifier getDirectFBKeyIdentifier(unsigned char ascii);

    /// @param code  a KEY_ code of Linux, or the BTN_ code of a mouse's thumb
    /// @return what the key means without Shift (DIKS_SMALL_A for KEY_A); a symbol from DFB_CUSTOM_KEY(0) to
    ///         DFB_CUSTOM_KEY(255) for a key without counterpart; DIKS_NULL for what is no key, and for other buttons
    static DFBInputDeviceKeySymbol getDirectFBKeySymbol(IWindowEvent::KeyEvent::Code code);
    /// @param ascii  an ASCII code
    /// @return the character, which is its own symbol, and DIKS_RETURN for a line feed; DIKS_NULL for a control
    ///         character that DirectFB has no name for, and above 127
    static DFBInputDeviceKeySymbol getDirectFBKeySymbol(unsigned char ascii);
};

} // namespace Corvane
