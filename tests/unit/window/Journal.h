#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace Corvane::Test
{

/// What happened in a test, in order, whoever did it and on whatever thread.
class Journal
{
public:
    using Entries = std::vector<std::string>;

    void add(std::string entry)
    {
        std::lock_guard guard(mutex);
        entries.push_back(std::move(entry));
    }

    Entries read()
    {
        std::lock_guard guard(mutex);
        return entries;
    }

    void clear()
    {
        std::lock_guard guard(mutex);
        entries.clear();
    }

private:
    std::mutex mutex;
    Entries entries;
};

/// The one of this process: system functions that a test replaces write into it, too.
inline Journal journal;

} // namespace Corvane::Test
