#pragma once

#include "box/Box.h"

namespace Procmand
{

/// Who makes the call that is handled, what that is in the box, and what it may do. Guarded by the lock of the box.
class Client
{
public:
    Client(Box& box, const Caller& caller);

    const Caller& getCaller() const { return caller; }
    const Rights& getRights() const { return rights; }
    /// @return whether the application is the caller's own. One that is being started is that of a child of the process
    /// manager, or of that child's process group, which belongs to no other: its process id is not known yet.
    bool has(const ManagedApplication& application) const;
    /// @return how many windows the client and its user have
    std::size_t countWindows() const;
    std::size_t countWindowsOfUser() const;
    /// @return how many applications the client's process has registered
    std::size_t countRegistrations() const;

private:
    template <class Condition>
    std::size_t countWindowsWhere(Condition condition) const;

    Box& box;
    const Caller caller;
    const ManagedApplication* launched = nullptr; ///< the one that the process manager has launched as this client
    bool isStarting = false; ///< the process manager has launched it, and does not know yet as what
    Rights rights;
};

} // namespace Procmand
