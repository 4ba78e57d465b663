#include <support/TemporaryDirectory.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace Corvane::Test
{

TemporaryDirectory::TemporaryDirectory()
{
    // Short on purpose: a socket's path has at most 107 bytes.
    char pattern[] = "/tmp/corvane-XXXXXX";
    if (mkdtemp(pattern) == nullptr)
        throw std::runtime_error("mkdtemp failed");
    path = pattern;
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

ScopedEnvironment::ScopedEnvironment(const char* name, const char* value) : name(name)
{
    const char* old = std::getenv(name);
    wasSet = old != nullptr;
    if (wasSet)
        oldValue = old;
    if (value != nullptr)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

ScopedEnvironment::~ScopedEnvironment()
{
    if (wasSet)
        setenv(name.c_str(), oldValue.c_str(), 1);
    else
        unsetenv(name.c_str());
}

} // namespace Corvane::Test
