#pragma once

#include <corvane/foundation/Export.h>
#include <string>
#include <string_view>

namespace Corvane
{

/// Writes one JSON text (RFC 8259) from beginning to end, on one line.
///
/// What it is given goes out in the order of the calls: `beginObject` and `endObject` enclose the members of an object;
/// the empty key stands for a value without a name: the text itself, or an element of an array. Inside an object it is
/// a name like any other. Bytes that are not UTF-8 are written as U+FFFD, so that the text is always valid.
///
/// Texts of up to 512 bytes are written without allocating memory, so that a process that dies with a damaged heap can
/// still announce it. Not synchronised: one thread uses a Serializer at a time.
///
///     Serializer serializer;
///     serializer.beginObject("");
///     serialize("uid", uid, serializer);
///     serializer.endObject("");
///     send(serializer.generate());
class CORVANE_EXPORT Serializer
{
public:
    Serializer();
    ~Serializer();
    Serializer(const Serializer&) = delete;
    Serializer& operator=(const Serializer&) = delete;

    void beginObject(const std::string& key);
    /// @param key  the key given to the matching `beginObject`
    void endObject(const std::string& key);
    void beginArray(const std::string& key);
    void endArray(const std::string& key);

    void writeString(std::string_view key, std::string_view value);
    void writeUnsigned(std::string_view key, unsigned int value);
    void writeInteger(std::string_view key, int value);
    void writeBoolean(std::string_view key, bool value);
    void writeNull(std::string_view key);

    /// Writes a member whose value is a JSON text already.
    /// @param json  one valid JSON value; it is not checked
    void writeJson(std::string_view key, std::string_view json);

    /// @return the text written so far. It lives until the next call on this object.
    const std::string& generate() const;

private:
    void begin(std::string_view key, char bracket);
    void end(char bracket);
    void beginValue(std::string_view key);

    struct Buffer;
    Buffer* const buffer; ///< owned: one of a few that every process keeps ready, or from the heap
};

/// Writes `"key":value`, or the value alone when the key is empty. See Serializer.
CORVANE_EXPORT void serialize(const std::string& key, const std::string& value, Serializer& serializer);
/// A text constant must not become a bool on its way to `serialize`.
CORVANE_EXPORT void serialize(const std::string& key, const char* value, Serializer& serializer);
CORVANE_EXPORT void serialize(const std::string& key, unsigned int value, Serializer& serializer);
CORVANE_EXPORT void serialize(const std::string& key, int value, Serializer& serializer);
CORVANE_EXPORT void serialize(const std::string& key, bool value, Serializer& serializer);

} // namespace Corvane
