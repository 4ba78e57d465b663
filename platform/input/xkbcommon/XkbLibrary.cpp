#include "XkbLibrary.h"

#include <dlfcn.h>
#include <stdexcept>

namespace Corvane
{

namespace
{

void* open()
{
    void* const handle = dlopen("libxkbcommon.so.0", RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr)
        throw std::runtime_error(dlerror());
    return handle;
}

} // namespace

template <class Function>
Function* XkbLibrary::find(const char* name) const
{
    void* const address = dlsym(handle, name);
    if (address == nullptr)
        throw std::runtime_error(dlerror());
    return reinterpret_cast<Function*>(address);
}

#define FIND(name) find<decltype(name)>(#name)

XkbLibrary::XkbLibrary()
    : handle(open()),
      contextNew(FIND(xkb_context_new)),
      contextUnref(FIND(xkb_context_unref)),
      contextSetLogLevel(FIND(xkb_context_set_log_level)),
      keymapNewFromNames(FIND(xkb_keymap_new_from_names)),
      keymapUnref(FIND(xkb_keymap_unref)),
      keymapModGetIndex(FIND(xkb_keymap_mod_get_index)),
      stateNew(FIND(xkb_state_new)),
      stateUnref(FIND(xkb_state_unref)),
      stateUpdateKey(FIND(xkb_state_update_key)),
      stateUpdateMask(FIND(xkb_state_update_mask)),
      stateSerializeMods(FIND(xkb_state_serialize_mods)),
      stateSerializeLayout(FIND(xkb_state_serialize_layout)),
      stateKeyGetOneSym(FIND(xkb_state_key_get_one_sym)),
      keysymToUtf8(FIND(xkb_keysym_to_utf8)),
      composeTableNewFromLocale(FIND(xkb_compose_table_new_from_locale)),
      composeTableUnref(FIND(xkb_compose_table_unref)),
      composeStateNew(FIND(xkb_compose_state_new)),
      composeStateUnref(FIND(xkb_compose_state_unref)),
      composeStateFeed(FIND(xkb_compose_state_feed)),
      composeStateReset(FIND(xkb_compose_state_reset)),
      composeStateGetStatus(FIND(xkb_compose_state_get_status)),
      composeStateGetUtf8(FIND(xkb_compose_state_get_utf8))
{
}

#undef FIND

const XkbLibrary& XkbLibrary::load()
{
    static const XkbLibrary library;
    return library;
}

} // namespace Corvane
