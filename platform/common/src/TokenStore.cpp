#include <corvane/common/TokenStore.h>

#include <mutex>
#include <stdexcept>

namespace Corvane
{

namespace
{

void checkLimit(const std::string& owner, std::size_t count, std::size_t limit, const char* what)
{
    if (count > limit)
        throw std::length_error(owner + " has " + std::to_string(count) + " " + what + ", at most " +
                                std::to_string(limit) + " are kept");
}

} // namespace

TokenStore::TokenStore() : mutex("TokenStore", 0) {}

TokenStore::~TokenStore() = default;

void TokenStore::create(unsigned int token, Attributes attributes)
{
    const std::string owner = "token " + std::to_string(token);
    checkLimit(owner, attributes.getValues().size(), NAME_LIMIT, "names");
    for (const auto& [name, values] : attributes.getValues())
        checkLimit(owner, values.getValues().size(), ATTRIBUTE_LIMIT, "attributes of one name");
    std::lock_guard guard(mutex);
    if (tokens.size() == TOKEN_LIMIT && !tokens.contains(token))
        throw std::length_error(owner + " is one too many: at most " + std::to_string(TOKEN_LIMIT) + " are kept");
    tokens.insert_or_assign(token, attributes);
}

void TokenStore::remove(unsigned int token)
{
    std::lock_guard guard(mutex);
    tokens.erase(token);
}

bool TokenStore::contains(unsigned int token) const
{
    std::lock_guard guard(mutex);
    return tokens.contains(token);
}

std::optional<int> TokenStore::find(unsigned int token, const std::string& name, const std::string& attribute) const
{
    std::lock_guard guard(mutex);
    const auto entry = tokens.find(token);
    if (entry == tokens.end())
        return {};
    const auto& names = entry->second.getValues();
    const auto values = names.find(name);
    if (values == names.end())
        return {};
    const auto value = values->second.getValues().find(attribute);
    return value == values->second.getValues().end() ? std::nullopt : std::optional(value->second);
}

std::size_t TokenStore::getCount() const
{
    std::lock_guard guard(mutex);
    return tokens.size();
}

} // namespace Corvane
