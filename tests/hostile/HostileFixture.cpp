#include "HostileFixture.h"

#include <corvane/common/RPCError.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Corvane::Test
{

void WithAttackers::startWithPolicy(const std::string& policy, const Words& options)
{
    if (!policy.empty()) {
        std::ofstream(getPolicyFile()) << policy;
        chmod(getPolicyFile().c_str(), 0644);
    }
    Words all{"--policy", getPolicyFile()};
    all.insert(all.end(), options.begin(), options.end());
    startProcmand(all);
}

std::string WithAttackers::inChild(const std::function<std::string()>& work)
{
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("there is no pipe");
    const pid_t child = fork();
    if (child == 0) {
        std::string words;
        try {
            words = work();
        } catch (const std::exception& error) {
            words = std::string("the attacker failed: ") + error.what();
        }
        _exit(::write(ends[1], words.data(), words.size()) == static_cast<ssize_t>(words.size()) ? 0 : 1);
    }
    close(ends[1]);
    std::string words;
    char buffer[4096];
    for (ssize_t size = read(ends[0], buffer, sizeof buffer); size > 0; size = read(ends[0], buffer, sizeof buffer))
        words.append(buffer, static_cast<std::size_t>(size));
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return words;
}

std::string WithAttackers::as(const TestUser& user, const std::function<std::string()>& work)
{
    return inChild([&] {
        if (setgroups(1, &ACCESS_GROUP) != 0 || setgid(user.group) != 0 || setuid(user.id) != 0)
            return std::string("the test cannot become ") + user.name;
        return work();
    });
}

std::string WithAttackers::answerTo(const std::string& method, const std::string& parameters)
{
    try {
        return RPCClient("ORU").call(method, parameters);
    } catch (const RPCError& error) {
        return error.what();
    }
}

std::vector<std::string> WithAttackers::audit(const Words& texts)
{
    std::vector<std::string> found;
    for (const nlohmann::json& entry : nlohmann::json::parse(call("IApplicationManager::getAudit"))) {
        const std::string text = entry.dump();
        if (std::all_of(texts.begin(), texts.end(),
                        [&text](const std::string& part) { return text.find(part) != text.npos; }))
            found.push_back(text);
    }
    return found;
}

std::string WithAttackers::windowFor(const std::string& uid, pid_t pid)
{
    return R"({"uid":")" + uid + R"(","pid":)" + std::to_string(pid) +
           R"(,"clientType":3,"resourceType":1,"settings":{}})";
}

std::string WithAttackers::registrationOf(const std::string& uid, pid_t pid)
{
    return R"({"uid":")" + uid + R"(","pid":)" + std::to_string(pid) + "}";
}

void WithOtherUsers::SetUp()
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    const std::string& folder = runtime.directory.getPath();
    ASSERT_EQ(chown(folder.c_str(), 0, ACCESS_GROUP), 0);
    ASSERT_EQ(chmod(folder.c_str(), 03770), 0);
}

} // namespace Corvane::Test
