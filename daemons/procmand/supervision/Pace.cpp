#include "supervision/Pace.h"

#include <algorithm>

namespace Procmand
{

namespace
{

/// @return whether each change counts, not just the last one
bool isChangeOfState(std::string_view name)
{
    return name == "IApplication::onStateChange" || name == "IWindow::onFocusChange";
}

} // namespace

void Pace::update(Clock::time_point now)
{
    // While something is merged, the end of the turn is waited for: then all of it is passed on.
    if (now - begin >= TURN && merged.empty())
        renew(now);
}

std::vector<Pace::Notification> Pace::renew(Clock::time_point now)
{
    begin = now;
    read = passed = 0;
    return std::exchange(merged, {});
}

bool Pace::count(std::string& name, std::string& payload)
{
    ++read;
    if (passed >= PASS_LIMIT && !isChangeOfState(name)) {
        merge(name, payload);
        return false;
    }
    ++passed;
    return true;
}

void Pace::merge(std::string& name, std::string& payload)
{
    const auto same =
        std::find_if(merged.begin(), merged.end(), [&](const Notification& earlier) { return earlier.first == name; });
    if (same != merged.end()) {
        same->second.swap(payload);
        ++replaced;
        return;
    }
    if (merged.size() == MERGE_LIMIT) {
        merged.erase(merged.begin());
        ++replaced;
    }
    merged.emplace_back(std::move(name), std::move(payload));
}

} // namespace Procmand
