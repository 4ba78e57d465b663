#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/SerialError.h>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Corvane
{

/// Reads one JSON text (RFC 8259) by key.
///
/// The whole text is parsed and checked at construction; the reading operations then look at one current object, which
/// is the text's own object at first. Of several members of one name the last counts. Every operation that fails throws
/// SerialError with the path of keys and what was wrong; the position is then unspecified, so give the deserializer up.
/// Nesting is limited to 64 levels. Not synchronised.
///
///     Deserializer deserializer("{\"opacity\":128}");
///     unsigned int opacity = deserialize<unsigned int>("opacity", deserializer);
class CORVANE_EXPORT Deserializer
{
public:
    /// @throws SerialError  the text is no valid JSON, no valid UTF-8, or goes on after its value
    explicit Deserializer(const std::string& text);
    virtual ~Deserializer();
    Deserializer(const Deserializer&) = delete;
    Deserializer& operator=(const Deserializer&) = delete;

    /// Makes the object that is called `key` the current one; `leaveMember` goes back. An empty key stays where it is.
    virtual void enterMember(const std::string& key);
    virtual void leaveMember(const std::string& key);

    /// The names of the current object's members, in the order of the text, double ones twice.
    virtual std::vector<std::string> getMemberNames();
    virtual std::size_t getMemberCount();
    /// Around the reading of member number `index` of the current object: between the two calls a key that is this
    /// member's name means this very member, even if others have the same name.
    virtual void beginMember(std::size_t index);
    virtual void endMember(std::size_t index);

    /// @return whether the current object has a member of that name
    bool hasMember(const std::string& key) const;

    std::string readString(const std::string& key) const;
    unsigned int readUnsigned(const std::string& key) const;
    int readInteger(const std::string& key) const;
    bool readBoolean(const std::string& key) const;

    /// Throws SerialError with the path of the current object and `key`, then `problem`.
    [[noreturn]] void fail(const std::string& key, const std::string& problem) const;

private:
    struct Document;
    const std::unique_ptr<Document> document;
};

/// Reads the member `key` of the current object as a T.
/// @throws SerialError  it is missing, of another type, or out of the range of T
template <class T>
T deserialize(const std::string& key, Deserializer& deserializer)
{
    // A serial type that is not one of the simple ones below is an object of its own: enter it, read it, leave it.
    deserializer.enterMember(key);
    T result(deserializer);
    deserializer.leaveMember(key);
    return result;
}

template <>
CORVANE_EXPORT std::string deserialize<std::string>(const std::string& key, Deserializer& deserializer);
template <>
CORVANE_EXPORT unsigned int deserialize<unsigned int>(const std::string& key, Deserializer& deserializer);
template <>
CORVANE_EXPORT int deserialize<int>(const std::string& key, Deserializer& deserializer);
template <>
CORVANE_EXPORT bool deserialize<bool>(const std::string& key, Deserializer& deserializer);

/// Builds the object that the member `key` holds, of the class that its member "type" names. Defined for each
/// polymorphic base in its own header. An empty key reads the current object itself.
/// @throws SerialError  as `deserialize` does, and for a type that is not known
template <class T>
std::shared_ptr<T> createSerialObject(const std::string& key, Deserializer& deserializer);

} // namespace Corvane
