#include "launch/Users.h"

#include <charconv>
#include <grp.h>
#include <pwd.h>

namespace Procmand
{

namespace
{

/// So much room the system's functions have for the texts of one entry.
constexpr std::size_t ENTRY_SIZE = 64 * 1024;

std::optional<unsigned int> readNumber(const std::string& word)
{
    unsigned int number = 0;
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, number);
    return error == std::errc() && stop == end && !word.empty() ? std::optional(number) : std::nullopt;
}

std::optional<User> makeUser(const passwd* found)
{
    if (found == nullptr)
        return std::nullopt;
    return User{.id = found->pw_uid,
                .group = found->pw_gid,
                .name = found->pw_name,
                .home = found->pw_dir,
                .shell = found->pw_shell};
}

} // namespace

std::vector<gid_t> User::findGroups() const
{
    std::vector<gid_t> groups(64);
    auto count = static_cast<int>(groups.size());
    if (getgrouplist(name.c_str(), group, groups.data(), &count) < 0) {
        groups.resize(static_cast<std::size_t>(count));
        getgrouplist(name.c_str(), group, groups.data(), &count);
    }
    groups.resize(static_cast<std::size_t>(count));
    return groups;
}

std::optional<User> findUser(uid_t id)
{
    std::vector<char> room(ENTRY_SIZE);
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(id, &entry, room.data(), room.size(), &found);
    return makeUser(found);
}

std::optional<User> findUser(const std::string& word)
{
    std::vector<char> room(ENTRY_SIZE);
    passwd entry{};
    passwd* found = nullptr;
    getpwnam_r(word.c_str(), &entry, room.data(), room.size(), &found);
    if (found != nullptr)
        return makeUser(found);
    const auto number = readNumber(word);
    return number ? findUser(static_cast<uid_t>(*number)) : std::nullopt;
}

std::optional<gid_t> findGroup(const std::string& word)
{
    std::vector<char> room(ENTRY_SIZE);
    group entry{};
    group* found = nullptr;
    getgrnam_r(word.c_str(), &entry, room.data(), room.size(), &found);
    if (found != nullptr)
        return found->gr_gid;
    return readNumber(word);
}

} // namespace Procmand
