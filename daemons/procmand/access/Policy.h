#pragma once

#include "access/Caller.h"
#include "access/Role.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Procmand
{

/// What one caller may do.
struct Rights {
    Role role = Role::NONE;
    std::map<std::string, bool, std::less<>> methods; ///< where the policy says something else than the role
    std::vector<std::string> users;                   ///< as whom it may launch, besides itself; "*" for all but two

    Extent extentOf(std::string_view method) const;
};

/// Who may do what: the rules of a file, or those that hold without one.
///
/// Root and the process manager's own user are managers, whatever the file says, and what the process manager has
/// launched is an application. Whoever else may connect is a viewer where no rule fits. Not synchronised.
class Policy
{
public:
    /// Reads the file. One that is missing leaves the rules that hold without one. One that cannot be used is a line in
    /// the log, and nobody is a viewer then: the file may have said so.
    static Policy load(const std::string& path);
    /// @param text  of a policy file. @throws std::runtime_error  tells what is wrong with it
    static Policy read(const std::string& text);

    /// @param application  name of the application that the caller belongs to, empty where it has none; null for a
    ///                     caller that was not launched
    Rights findRights(const Caller& caller, const std::string* application) const;
    /// @return whether a launch may set this variable for another user than the one who asks
    bool mayPass(std::string_view variable) const;

private:
    /// Whom a rule is for: one of the three.
    struct Subject {
        std::optional<uid_t> user;
        std::optional<gid_t> group;
        std::string application;
    };
    struct Rule {
        Subject subject;
        Rights rights;
    };
    friend class PolicyReader;

    std::vector<Rule> rules;              ///< the first one that fits counts
    std::vector<std::string> environment; ///< further variables; "APP_*" for all that begin so
    Role otherwise = Role::VIEWER;        ///< of a caller that no rule fits
};

} // namespace Procmand
