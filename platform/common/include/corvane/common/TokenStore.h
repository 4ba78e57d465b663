#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/MapObject.h>
#include <corvane/foundation/Mutex.h>
#include <cstddef>
#include <map>
#include <optional>
#include <string>

namespace Corvane
{

/// Keeps authorization tokens for a service that does not want to keep them in a way of its own.
///
/// A token is a number that a caller has chosen; its attributes are a map from a name to a map from an attribute to a
/// number. What they permit is the service's affair:
///
///     void createAuthorizationToken(unsigned int token, MapObject<MapObject<int>> attributes) override
///     {
///         tokens.create(token, attributes);
///     }
///     bool mayChangeVolume(unsigned int token) { return tokens.find(token, "volume", "change").value_or(0) != 0; }
///
/// What callers can make it hold is bounded, in numbers and not in the length of the names: a message of the control
/// server is at most 1 MiB long. Thread-safe.
class CORVANE_EXPORT TokenStore
{
public:
    using Attributes = MapObject<MapObject<int>>;

    static constexpr std::size_t TOKEN_LIMIT = 4096;   ///< tokens in the store
    static constexpr std::size_t NAME_LIMIT = 64;      ///< names of one token
    static constexpr std::size_t ATTRIBUTE_LIMIT = 64; ///< attributes of one name

    TokenStore();
    TokenStore(const TokenStore&) = delete;
    TokenStore& operator=(const TokenStore&) = delete;
    ~TokenStore();

    /// Keeps a token. A token that is there already gets the new attributes in place of its old ones.
    /// @throws std::length_error  it would go past one of the limits, and says which; the store stays as it was
    void create(unsigned int token, Attributes attributes);
    /// Forgets a token. One that is not there is no error.
    void remove(unsigned int token);

    bool contains(unsigned int token) const;
    /// @return the number of one attribute; nothing when the token, the name or the attribute is not there
    std::optional<int> find(unsigned int token, const std::string& name, const std::string& attribute) const;
    /// @return how many tokens there are, 0 to TOKEN_LIMIT
    std::size_t getCount() const;

private:
    mutable Mutex mutex;
    std::map<unsigned int, Attributes> tokens;
};

} // namespace Corvane
