#include "access/Policy.h"

#include "access/PolicyReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <corvane/common/FileDescriptor.h>
#include <corvane/foundation/DebugPrint.h>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Procmand
{

namespace
{

using Corvane::corvaneDebugPrint;
using Corvane::FileDescriptor;

constexpr std::size_t SIZE_LIMIT = 256 * 1024;

/// They say in which language and how much an application speaks, and lead it to no file.
constexpr std::array<std::string_view, 4> ENVIRONMENT{"LANG", "LC_*", "CORVANE_DEBUG_LEVEL", "CORVANE_APP_HOSTNAME"};

bool fits(std::string_view variable, std::string_view pattern)
{
    return pattern.ends_with('*') ? variable.starts_with(pattern.substr(0, pattern.size() - 1)) : variable == pattern;
}

/// @throws std::runtime_error  others than root and the process manager's own user can write the file
void checkOwner(const FileDescriptor& file)
{
    struct stat status {
    };
    if (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        throw std::runtime_error("it is no file");
    if (status.st_uid != 0 && status.st_uid != geteuid())
        throw std::runtime_error("it belongs neither to root nor to the process manager's user");
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        throw std::runtime_error("others than its owner may write it");
}

std::string readWhole(const FileDescriptor& file)
{
    std::string text(SIZE_LIMIT + 1, '\0');
    std::size_t size = 0;
    for (ssize_t count = 1; count > 0 && size < text.size(); size += static_cast<std::size_t>(count)) {
        count = ::read(file.get(), text.data() + size, text.size() - size);
        if (count < 0)
            throw std::system_error(errno, std::generic_category(), "it cannot be read");
    }
    if (size > SIZE_LIMIT)
        throw std::runtime_error("it is too long");
    text.resize(size);
    return text;
}

} // namespace

Extent Rights::extentOf(std::string_view method) const
{
    const auto entry = methods.find(method);
    if (entry != methods.end())
        return entry->second ? Extent::ALL : Extent::NOTHING;
    return Procmand::extentOf(role, method);
}

Policy Policy::load(const std::string& path)
{
    // A link may lead to what somebody else can replace; a pipe would be waited for.
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.isOpen() && errno == ENOENT)
        return {};
    try {
        if (!file.isOpen())
            throw std::system_error(errno, std::generic_category(), "it cannot be opened");
        checkOwner(file);
        return read(readWhole(file));
    } catch (const std::exception& error) {
        corvaneDebugPrint(Corvane::DEBUG_ERROR, "procmand", "Policy", __LINE__,
                          "the policy %s is not used, and only root and this user may do anything: %s\n", path.c_str(),
                          error.what());
    }
    Policy policy;
    policy.otherwise = Role::NONE;
    return policy;
}

Policy Policy::read(const std::string& text)
{
    return PolicyReader().read(text);
}

Rights Policy::findRights(const Caller& caller, const std::string* application) const
{
    const bool isLaunched = application != nullptr;
    if (!isLaunched && caller.isTrusted())
        return {.role = Role::MANAGER, .methods = {}, .users = {}};
    const auto fit = [&](const Rule& rule) {
        if (isLaunched)
            return !application->empty() && rule.subject.application == *application;
        return rule.subject.user == caller.getUser() || (rule.subject.group && caller.isMemberOf(*rule.subject.group));
    };
    const auto rule = std::find_if(rules.begin(), rules.end(), fit);
    if (rule != rules.end())
        return rule->rights;
    return {.role = isLaunched ? Role::APPLICATION : otherwise, .methods = {}, .users = {}};
}

bool Policy::mayPass(std::string_view variable) const
{
    if (variable.starts_with("LD_"))
        return false;
    const auto fit = [variable](std::string_view pattern) { return fits(variable, pattern); };
    return std::any_of(ENVIRONMENT.begin(), ENVIRONMENT.end(), fit) ||
           std::any_of(environment.begin(), environment.end(), fit);
}

} // namespace Procmand
