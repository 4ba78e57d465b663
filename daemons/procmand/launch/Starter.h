#pragma once

#include "launch/Users.h"

#include <corvane/common/FileDescriptor.h>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Procmand
{

/// Texts in the form that the system takes them. The pointers lead into the texts.
class PointerList
{
public:
    explicit PointerList(std::vector<std::string> list);
    char* const* get() const { return pointers.data(); }

private:
    std::vector<std::string> texts;
    std::vector<char*> pointers;
};

/// What a new process needs in order to become a program. Nothing here is allocated after the fork.
struct StartPlan {
    std::vector<std::string> paths; ///< of the program, in the order in which they are tried
    PointerList arguments;
    PointerList environment;
    std::optional<User> user;       ///< none: the process manager's own
    std::vector<gid_t> groups;      ///< of that user
    Corvane::FileDescriptor folder; ///< to work in
    Corvane::FileDescriptor output;
    Corvane::FileDescriptor error;
};

/// A new process, the leader of a process group of its own, that waits for the word to become its program.
///
/// If the word does not come, because this process has died above all, the new one ends without a trace of the program.
/// So whoever notes it before the word is given has noted every program that ever ran.
class Starter
{
public:
    /// Makes the process. @throws std::system_error
    explicit Starter(const StartPlan& plan);
    /// Without the word the process ends, and is waited for.
    ~Starter();
    Starter(const Starter&) = delete;
    Starter& operator=(const Starter&) = delete;

    /// @return its id, which stays its own until somebody has waited for it
    pid_t getPid() const { return pid; }
    /// Gives the word, and waits until the program runs.
    /// @return 0, or why it does not (an error number of the system); there is no process any more then
    int run();

private:
    void reap();

    pid_t pid = -1;
    Corvane::FileDescriptor channel; ///< the word goes there, and a reason comes back
};

} // namespace Procmand
