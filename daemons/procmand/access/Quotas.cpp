#include "access/Quotas.h"

#include <stdexcept>
#include <string>

namespace Procmand
{

void Quotas::countLaunch(uid_t user, Clock::time_point now)
{
    std::deque<Clock::time_point>& recent = launches[user];
    while (!recent.empty() && now - recent.front() >= std::chrono::minutes(1))
        recent.pop_front();
    if (recent.size() >= LAUNCHES_A_MINUTE)
        throw std::runtime_error("user " + std::to_string(user) + " has launched " + std::to_string(LAUNCHES_A_MINUTE) +
                                 " applications within a minute");
    recent.push_back(now);
}

} // namespace Procmand
