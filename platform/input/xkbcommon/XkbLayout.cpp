#include "KeyboardLayout.h"
#include "XkbLibrary.h"

#include <algorithm>
#include <array>
#include <corvane/foundation/DebugPrint.h>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "MultiInputDriver";
constexpr const char* COMPONENT = "KeyboardLayout";
/// What XKB's codes of keys are above Linux's.
constexpr xkb_keycode_t OFFSET = 8;

template <class Object>
using Owned = std::unique_ptr<Object, void (*)(Object*)>;

/// Takes the text before the next comma off a list, with the layouts in it separated as XKB wants them.
std::string takeWord(std::string_view& list)
{
    const std::size_t comma = std::min(list.find(','), list.size());
    std::string word(list.substr(0, comma));
    list.remove_prefix(std::min(comma + 1, list.size()));
    std::ranges::replace(word, '+', ',');
    return word;
}

/// The locale whose table says what dead keys and the Compose key make of letters.
const char* findLocale()
{
    for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"})
        if (const char* const value = std::getenv(name); value != nullptr && *value != '\0')
            // The table of these two knows Latin-1 alone.
            return value == std::string_view("C") || value == std::string_view("POSIX") ? "en_US.UTF-8" : value;
    return "en_US.UTF-8";
}

/// A layout as XKB has it, shared by all keyboards.
struct Keymap {
    explicit Keymap(const std::string& description);

    xkb_mod_mask_t findModifier(const char* name) const;

    const XkbLibrary& xkb = XkbLibrary::load();
    const Owned<xkb_context> context;
    Owned<xkb_keymap> keymap;
    Owned<xkb_compose_table> compose; ///< null where the system has none
    xkb_mod_mask_t capsLock;
    xkb_mod_mask_t numLock;
    xkb_mod_mask_t commands; ///< with one of these a key is a command and types nothing
};

Keymap::Keymap(const std::string& description)
    : context(xkb.contextNew(XKB_CONTEXT_NO_ENVIRONMENT_NAMES), xkb.contextUnref),
      keymap(nullptr, xkb.keymapUnref),
      compose(nullptr, xkb.composeTableUnref)
{
    if (context == nullptr)
        throw std::runtime_error("the layouts of XKB are not installed");
    // What it says of a layout that it does not have is many lines, on the standard error output.
    xkb.contextSetLogLevel(context.get(), XKB_LOG_LEVEL_CRITICAL);
    std::string_view list(description);
    const std::string layout = takeWord(list);
    const std::string variant = takeWord(list);
    const std::string options(list);
    const xkb_rule_names names{"evdev", "pc105", layout.c_str(), variant.c_str(), options.c_str()};
    keymap.reset(xkb.keymapNewFromNames(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (keymap == nullptr)
        throw std::runtime_error("XKB has no such layout");
    compose.reset(xkb.composeTableNewFromLocale(context.get(), findLocale(), XKB_COMPOSE_COMPILE_NO_FLAGS));
    if (compose == nullptr)
        corvaneDebugPrint(DEBUG_WARNING, TAG, COMPONENT, __LINE__,
                          "dead keys and Compose do nothing: there is no table of what they make of letters\n");
    capsLock = findModifier(XKB_MOD_NAME_CAPS);
    numLock = findModifier(XKB_MOD_NAME_NUM);
    commands = findModifier(XKB_MOD_NAME_CTRL) | findModifier(XKB_MOD_NAME_ALT) | findModifier(XKB_MOD_NAME_LOGO);
}

xkb_mod_mask_t Keymap::findModifier(const char* name) const
{
    const xkb_mod_index_t index = xkb.keymapModGetIndex(keymap.get(), name);
    return index == XKB_MOD_INVALID ? 0 : xkb_mod_mask_t{1} << index;
}

/// What is held, latched and locked.
struct Modifiers {
    xkb_mod_mask_t depressed;
    xkb_mod_mask_t latched;
    xkb_mod_mask_t locked;
};

/// One keyboard with that layout.
class XkbTyping : public Typing
{
public:
    explicit XkbTyping(std::shared_ptr<const Keymap> layout);

    std::optional<std::string> type(unsigned int code, bool isCapsLocked) override;
    bool isCapsLock(unsigned int code) const override;
    void setDown(unsigned int code, bool isDown) override;
    void forgetDeadKey() override;

private:
    Modifiers findModifiers(bool isCapsLocked) const;
    xkb_keysym_t findSymbol(unsigned int code, const Modifiers& modifiers) const;
    std::optional<std::string> feedCompose(xkb_keysym_t symbol);
    std::string findText(xkb_keysym_t symbol) const;

    const std::shared_ptr<const Keymap> layout;
    const XkbLibrary& xkb;
    const Owned<xkb_state> keys; ///< what the keys that are down and that were pressed have made of the modifiers
    const Owned<xkb_state> view; ///< in which a symbol is looked up
    const Owned<xkb_compose_state> compose;
};

XkbTyping::XkbTyping(std::shared_ptr<const Keymap> shared)
    : layout(std::move(shared)),
      xkb(layout->xkb),
      keys(xkb.stateNew(layout->keymap.get()), xkb.stateUnref),
      view(xkb.stateNew(layout->keymap.get()), xkb.stateUnref),
      compose(layout->compose != nullptr ? xkb.composeStateNew(layout->compose.get(), XKB_COMPOSE_STATE_NO_FLAGS)
                                         : nullptr,
              xkb.composeStateUnref)
{
}

std::optional<std::string> XkbTyping::type(unsigned int code, bool isCapsLocked)
{
    Modifiers modifiers = findModifiers(isCapsLocked);
    if (((modifiers.depressed | modifiers.latched | modifiers.locked) & layout->commands) != 0) {
        forgetDeadKey();
        return "";
    }
    xkb_keysym_t symbol = findSymbol(code, modifiers);
    // The keypad always gives its digits and signs, since a box has no light that shows Num Lock.
    if (symbol >= XKB_KEY_KP_Space && symbol <= XKB_KEY_KP_Equal)
        symbol = findSymbol(code, {0, 0, layout->numLock});
    return compose != nullptr ? feedCompose(symbol) : findText(symbol);
}

bool XkbTyping::isCapsLock(unsigned int code) const
{
    return findSymbol(code, findModifiers(false)) == XKB_KEY_Caps_Lock;
}

void XkbTyping::setDown(unsigned int code, bool isDown)
{
    xkb.stateUpdateKey(keys.get(), code + OFFSET, isDown ? XKB_KEY_DOWN : XKB_KEY_UP);
}

void XkbTyping::forgetDeadKey()
{
    if (compose != nullptr)
        xkb.composeStateReset(compose.get());
}

Modifiers XkbTyping::findModifiers(bool isCapsLocked) const
{
    Modifiers modifiers{xkb.stateSerializeMods(keys.get(), XKB_STATE_MODS_DEPRESSED),
                        xkb.stateSerializeMods(keys.get(), XKB_STATE_MODS_LATCHED),
                        xkb.stateSerializeMods(keys.get(), XKB_STATE_MODS_LOCKED)};
    // Not XKB's own Caps Lock, which knows nothing of the light, and goes off only when its key comes up.
    modifiers.depressed &= ~layout->capsLock;
    modifiers.locked &= ~layout->capsLock;
    modifiers.locked |= isCapsLocked ? layout->capsLock : 0;
    return modifiers;
}

xkb_keysym_t XkbTyping::findSymbol(unsigned int code, const Modifiers& modifiers) const
{
    xkb.stateUpdateMask(view.get(), modifiers.depressed, modifiers.latched, modifiers.locked,
                        xkb.stateSerializeLayout(keys.get(), XKB_STATE_LAYOUT_DEPRESSED),
                        xkb.stateSerializeLayout(keys.get(), XKB_STATE_LAYOUT_LATCHED),
                        xkb.stateSerializeLayout(keys.get(), XKB_STATE_LAYOUT_LOCKED));
    return xkb.stateKeyGetOneSym(view.get(), code + OFFSET);
}

std::optional<std::string> XkbTyping::feedCompose(xkb_keysym_t symbol)
{
    if (xkb.composeStateFeed(compose.get(), symbol) == XKB_COMPOSE_FEED_IGNORED)
        return findText(symbol);
    const xkb_compose_status status = xkb.composeStateGetStatus(compose.get());
    if (status == XKB_COMPOSE_COMPOSING)
        return {};
    std::array<char, 64> text{};
    if (status == XKB_COMPOSE_COMPOSED)
        xkb.composeStateGetUtf8(compose.get(), text.data(), text.size());
    forgetDeadKey();
    // A letter that the dead key does not go with comes alone: nobody wants to press it twice.
    return text[0] != '\0' ? std::string(text.data()) : findText(symbol);
}

std::string XkbTyping::findText(xkb_keysym_t symbol) const
{
    std::array<char, 16> text{};
    xkb.keysymToUtf8(symbol, text.data(), text.size());
    const auto first = static_cast<unsigned char>(text[0]);
    // Enter, Tab, Backspace, Escape and Delete have characters too, but they are commands.
    constexpr unsigned char DELETE = 0x7f;
    return first >= ' ' && first != DELETE ? std::string(text.data()) : std::string();
}

} // namespace

KeyboardLayout::Factory loadLayout(const std::string& description)
{
    try {
        return [layout = std::make_shared<const Keymap>(description)] { return std::make_unique<XkbTyping>(layout); };
    } catch (const std::runtime_error& failure) {
        corvaneDebugPrint(DEBUG_WARNING, TAG, COMPONENT, __LINE__,
                          "CORVANE_KEYBOARD_LAYOUT is \"%s\": %s; the US layout is used\n", description.c_str(),
                          failure.what());
        return nullptr;
    }
}

} // namespace Corvane
