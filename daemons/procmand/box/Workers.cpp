#include "box/Workers.h"

#include "box/Containment.h"

#include <system_error>

namespace Procmand
{

Workers::Workers(unsigned int count)
{
    threads.reserve(count);
    try {
        while (threads.size() < count)
            threads.emplace_back([this] { work(); });
    } catch (const std::system_error& error) {
        if (threads.empty())
            throw;
        Corvane::corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "Workers", __LINE__,
                                   "%zu threads of %u have to do: %s\n", threads.size(), count, error.what());
    }
}

Workers::~Workers()
{
    finish();
}

void Workers::finish()
{
    {
        std::lock_guard guard(mutex);
        ending = true;
    }
    changed.notify_all();
    for (std::thread& thread : threads)
        thread.join();
    threads.clear();
}

void Workers::run(Job job)
{
    {
        std::lock_guard guard(mutex);
        if (ending)
            return;
        jobs.push_back(std::move(job));
    }
    changed.notify_one();
}

void Workers::work()
{
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return ending || !jobs.empty(); });
        if (jobs.empty())
            return;
        {
            const Job job = std::move(jobs.front());
            jobs.pop_front();
            lock.unlock();
            contain("Workers", job);
        } // the job is destroyed outside of the lock: what it owns may take its time to go
        lock.lock();
    }
}

} // namespace Procmand
