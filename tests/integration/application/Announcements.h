#pragma once

#include <chrono>
#include <corvane/common/RPCClient.h>
#include <string>
#include <support/Await.h>
#include <vector>

namespace Corvane::Test
{

/// Everything that a server announces, until it is gone.
class Announcements
{
public:
    explicit Announcements(const RPCClient& server) : client(server.getServerName())
    {
        client.subscribe(
            {"*"}, [this](const std::string& name, const std::string& payload) { box.put(name + " " + payload); },
            [this](bool connected) {
                if (!connected)
                    box.put("gone");
            });
    }

    /// @return the next announcement that is no keep-alive; "gone" when the server is gone
    std::string next()
    {
        const auto end = std::chrono::steady_clock::now() + DEADLINE;
        std::string announcement = "nothing";
        while (box.take(announcement) && announcement.starts_with("IApplication::onKeepAlive")) {
            if (std::chrono::steady_clock::now() > end)
                return "nothing but keep-alives";
        }
        return announcement;
    }

    /// @return everything until the server was gone, keep-alives left out
    std::vector<std::string> untilGone()
    {
        std::vector<std::string> all;
        for (std::string one = next(); one != "gone" && !one.starts_with("nothing"); one = next())
            all.push_back(one);
        return all;
    }

    Mailbox<std::string> box;

private:
    RPCClient client; // last: its thread puts into the mailbox until it is gone
};

} // namespace Corvane::Test
