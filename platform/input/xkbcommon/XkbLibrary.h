#pragma once

#include <memory>
#include <xkbcommon/xkbcommon-compose.h>
#include <xkbcommon/xkbcommon.h>

namespace Corvane
{

/// libxkbcommon, loaded at run time and for good: a process without a layout does not carry it, and a box without
/// layouts need not have it.
///
///     const XkbLibrary& xkb = XkbLibrary::load();
///     xkb.contextNew(XKB_CONTEXT_NO_FLAGS);
class XkbLibrary
{
    /// Before the functions, which are found in it.
    void* const handle;

    template <class Function>
    Function* find(const char* name) const;

public:
    /// @throws std::runtime_error  the library is not there, or is too old
    static const XkbLibrary& load();

    XkbLibrary(const XkbLibrary&) = delete;
    XkbLibrary& operator=(const XkbLibrary&) = delete;

    decltype(xkb_context_new)* const contextNew;
    decltype(xkb_context_unref)* const contextUnref;
    decltype(xkb_context_set_log_level)* const contextSetLogLevel;
    decltype(xkb_keymap_new_from_names)* const keymapNewFromNames;
    decltype(xkb_keymap_unref)* const keymapUnref;
    decltype(xkb_keymap_mod_get_index)* const keymapModGetIndex;
    decltype(xkb_state_new)* const stateNew;
    decltype(xkb_state_unref)* const stateUnref;
    decltype(xkb_state_update_key)* const stateUpdateKey;
    decltype(xkb_state_update_mask)* const stateUpdateMask;
    decltype(xkb_state_serialize_mods)* const stateSerializeMods;
    decltype(xkb_state_serialize_layout)* const stateSerializeLayout;
    decltype(xkb_state_key_get_one_sym)* const stateKeyGetOneSym;
    decltype(xkb_keysym_to_utf8)* const keysymToUtf8;
    decltype(xkb_compose_table_new_from_locale)* const composeTableNewFromLocale;
    decltype(xkb_compose_table_unref)* const composeTableUnref;
    decltype(xkb_compose_state_new)* const composeStateNew;
    decltype(xkb_compose_state_unref)* const composeStateUnref;
    decltype(xkb_compose_state_feed)* const composeStateFeed;
    decltype(xkb_compose_state_reset)* const composeStateReset;
    decltype(xkb_compose_state_get_status)* const composeStateGetStatus;
    decltype(xkb_compose_state_get_utf8)* const composeStateGetUtf8;

private:
    XkbLibrary();
};

} // namespace Corvane
