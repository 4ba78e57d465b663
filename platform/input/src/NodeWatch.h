#pragma once

#include <corvane/common/FileDescriptor.h>
#include <string>

namespace Corvane
{

/// Hears when a node appears in a folder, and when somebody changes who may open one. Not synchronised.
///
/// Where no udev daemon runs, a device is announced before its node has its permissions: something else gives them
/// later.
class NodeWatch
{
public:
    /// Starts to hear. @return false when this hears already, or when the system refuses, as for a folder that is
    /// missing
    bool start(const std::string& folder);
    void stop() { inotify.reset(); }
    /// @return a descriptor that is readable when something was heard; -1 while this does not hear
    int getDescriptor() const { return inotify.get(); }
    /// Takes all that was heard; does not block.
    void take() const;

private:
    FileDescriptor inotify;
};

} // namespace Corvane
