#pragma once

#include <corvane/common/FileDescriptor.h>
#include <string>

namespace Procmand
{

/// Keeps other process managers off a state folder as long as this object lives, and no longer than its process does.
class StateLock
{
public:
    /// Creates the folder where it is missing. Waits two seconds at most for one that another process has.
    /// @throws std::runtime_error  another process has the folder, or it cannot be used; with a text for people
    explicit StateLock(const std::string& folder);

private:
    Corvane::FileDescriptor file;
};

} // namespace Procmand
