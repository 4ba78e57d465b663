#include "box/Workers.h"

namespace Procmand
{

Workers::Workers(unsigned int limit) : limit(limit) {}

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
        if (jobs.size() > idle && threads.size() < limit)
            threads.emplace_back([this] { work(); });
    }
    changed.notify_one();
}

void Workers::work()
{
    std::unique_lock lock(mutex);
    for (;;) {
        ++idle;
        changed.wait(lock, [this] { return ending || !jobs.empty(); });
        --idle;
        if (jobs.empty())
            return;
        {
            const Job job = std::move(jobs.front());
            jobs.pop_front();
            lock.unlock();
            job();
        } // the job is destroyed outside of the lock: what it owns may take its time to go
        lock.lock();
    }
}

} // namespace Procmand
