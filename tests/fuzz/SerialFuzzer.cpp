#include "JsonText.h"
#include "Require.h"
#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/MapObject.h>
#include <corvane/foundation/SerialError.h>
#include <corvane/foundation/Serializer.h>
#include <corvane/interfaces/ILifecycleManagement.h>
#include <corvane/interfaces/ISurfaceManagement.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// Any text may come to a deserializer: it is read or refused with a SerialError, and what was read and written again
/// reads the same. Every other exception ends the program, and so is found.
namespace
{

using namespace Corvane;
using InputEvent = IWindowEvent::InputEvent;

/// @return what `read` returns, nothing when it refuses the text
template <class Read>
auto attempt(Read read) -> std::optional<decltype(read())>
{
    try {
        return read();
    } catch (const SerialError& error) {
        require(error.what()[0] != '\0', "an error says what was wrong");
        return {};
    }
}

template <class T>
void checkObject(const std::string& text)
{
    const auto read = [](const std::string& source) {
        Deserializer deserializer(source);
        return T(deserializer).serialize();
    };
    const std::optional<std::string> written = attempt([&] { return read(text); });
    if (written)
        require(read(*written) == *written, "an object that was written reads the same");
}

void checkEvent(const std::string& text, const std::string& key)
{
    const std::optional<std::shared_ptr<InputEvent>> event = attempt([&] {
        Deserializer deserializer(text);
        return createSerialObject<InputEvent>(key, deserializer);
    });
    if (!event)
        return;
    const std::string written = (*event)->serialize();
    Deserializer deserializer(written);
    require(createSerialObject<InputEvent>("", deserializer)->serialize() == written,
            "an event that was written reads the same");
}

template <class T>
void checkMember(Deserializer& deserializer, const std::string& name)
{
    const std::optional<T> value = attempt([&] { return deserialize<T>(name, deserializer); });
    if (!value)
        return;
    Serializer serializer;
    serializer.beginObject("");
    serialize(name, *value, serializer);
    serializer.endObject("");
    Deserializer again(serializer.generate());
    require(deserialize<T>(name, again) == *value, "a value that was written reads the same");
}

void checkMembers(const std::string& text)
{
    Deserializer deserializer(text);
    const std::vector<std::string> names = deserializer.getMemberNames();
    require(names.size() == deserializer.getMemberCount(), "there are as many names as members");
    // Each member costs a few passes over its object: a handful shows as much as all of them.
    for (std::size_t i = 0; i < names.size() && i < 16; ++i) {
        require(deserializer.hasMember(names[i]), "a name that is listed is there");
        deserializer.beginMember(i);
        checkMember<std::string>(deserializer, names[i]);
        checkMember<unsigned int>(deserializer, names[i]);
        checkMember<int>(deserializer, names[i]);
        checkMember<bool>(deserializer, names[i]);
        deserializer.endMember(i);
    }
}

/// The pieces of a text that are passed on as they stand in it.
void checkPieces(const std::string& text)
{
    const JsonText whole(text);
    const auto check = [](simdjson::dom::element value, std::string_view raw) {
        const JsonText piece(raw);
        require(simdjson::minify(piece.root()) == simdjson::minify(value), "a piece of a text is the value itself");
    };
    whole.forEachMember(
        [&](std::string_view, simdjson::dom::element value, std::string_view raw) { check(value, raw); });
    whole.forEachElement(check);
}

/// Whatever is written as a string, in UTF-8 or not, is read without complaint.
void checkString(const std::string& bytes)
{
    Serializer serializer;
    serializer.beginObject("");
    serializer.writeString(bytes, bytes);
    serializer.endObject("");
    Deserializer deserializer(serializer.generate());
    const std::string name = deserializer.getMemberNames().at(0);
    const std::string value = deserializer.readString(name);
    require(name == value, "a name is escaped like a value");
    if (simdjson::validate_utf8(bytes))
        require(value == bytes, "a string that was written reads the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkString(text);
    checkObject<MapObject<int>>(text);
    checkObject<MapObject<MapObject<int>>>(text);
    checkObject<ISurfaceCompositing::Rect>(text);
    checkObject<ISurfaceManagement::CreationSettings>(text);
    checkObject<ILifecycleManagement::RuntimeStatistics>(text);
    checkEvent(text, "");
    checkEvent(text, "event");
    attempt([&] { return checkPieces(text), true; });
    attempt([&] { return checkMembers(text), true; });
    return 0;
}
