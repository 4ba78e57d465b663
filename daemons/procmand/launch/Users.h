#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// The users of this machine.
namespace Procmand
{

/// As whom a program runs.
struct User {
    uid_t id = 0;
    gid_t group = 0;
    std::string name;
    std::string home;
    std::string shell;

    /// @return all groups of the user, the main one among them
    std::vector<gid_t> findGroups() const;
};

/// @param word  a name, or a number where there is no such name
/// @return none where there is no such user
std::optional<User> findUser(const std::string& word);
std::optional<User> findUser(uid_t id);
std::optional<gid_t> findGroup(const std::string& word);

} // namespace Procmand
