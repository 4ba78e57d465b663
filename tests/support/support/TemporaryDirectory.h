#pragma once

#include <string>

namespace Corvane::Test
{

/// A folder of its own for one test, removed with everything in it at the end.
class TemporaryDirectory
{
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& getPath() const { return path; }

private:
    std::string path;
};

/// Sets an environment variable, or removes it (null), and puts the old value back at the end.
class ScopedEnvironment
{
public:
    ScopedEnvironment(const char* name, const char* value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::string name;
    std::string oldValue;
    bool wasSet;
};

/// A runtime folder of its own: servers and clients of this test, and of its children, meet there and nowhere else.
struct TemporaryRuntime {
    TemporaryDirectory directory;
    ScopedEnvironment environment{"CORVANE_RUNTIME_DIR", directory.getPath().c_str()};
};

} // namespace Corvane::Test
