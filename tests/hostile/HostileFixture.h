#pragma once

#include "ProcmandFixture.h"

#include <functional>
#include <grp.h>
#include <sys/types.h>

namespace Corvane::Test
{

/// A user of this machine, with one further group.
struct TestUser {
    const char* name;
    uid_t id;
    gid_t group;
};

/// Two that every Debian has. The group of the first is the one that may connect.
constexpr TestUser MEMBER{.name = "nobody", .id = 65534, .group = 65534};
constexpr TestUser STRANGER{.name = "daemon", .id = 1, .group = 1};
constexpr gid_t ACCESS_GROUP = 65534;

/// Attacks on the process manager by processes of their own.
class WithAttackers : public WithProcmand
{
protected:
    /// The same as `startProcmand`, without the policy of this machine. @param policy  text of its own, empty for none
    void startWithPolicy(const std::string& policy = "", const Words& options = {});

    /// Does something in a process of its own, as it is. @return what that returns
    static std::string inChild(const std::function<std::string()>& work);
    /// The same as another user, who is a member of the access group.
    static std::string as(const TestUser& user, const std::function<std::string()>& work);
    /// @return the result of a call, or what it is refused with; on a connection of its own
    static std::string answerTo(const std::string& method, const std::string& parameters = "{}");

    std::string getPolicyFile() const { return state.getPath() + "/policy.json"; }
    /// @return the records of the audit that contain all of these texts
    std::vector<std::string> audit(const Words& texts);

    /// The parameters of `getResource` for a window of this process.
    static std::string windowFor(const std::string& uid, pid_t pid);
    static std::string registrationOf(const std::string& uid, pid_t pid);
};

/// The same with a process manager of root that members of the access group may connect to.
class WithOtherUsers : public WithAttackers
{
protected:
    void SetUp() override;

    ScopedEnvironment access{"CORVANE_RPC_GROUP", std::to_string(ACCESS_GROUP).c_str()};
};

} // namespace Corvane::Test
