#include "ServiceManager.h"

#include <corvane/common/FileDescriptor.h>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <support/TemporaryDirectory.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Procmand
{

namespace
{

using Corvane::Test::ScopedEnvironment;

/// What a service manager listens with. @param name  as in NOTIFY_SOCKET
Corvane::FileDescriptor listenTo(std::string name)
{
    if (name.front() == '@')
        name.front() = '\0';
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path, name.size());
    Corvane::FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    EXPECT_EQ(bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), length), 0) << std::strerror(errno);
    return socket;
}

/// @return the next thing that was told; empty when nothing was
std::string receive(const Corvane::FileDescriptor& socket)
{
    char text[100];
    const ssize_t size = recv(socket.get(), text, sizeof text, MSG_DONTWAIT);
    return size < 0 ? "" : std::string(text, static_cast<std::size_t>(size));
}

} // namespace

TEST(ServiceManager, HearsWhatItIsToldAtAPath)
{
    const Corvane::Test::TemporaryDirectory folder;
    const std::string name = folder.getPath() + "/notify";
    const auto socket = listenTo(name);
    const ScopedEnvironment variable("NOTIFY_SOCKET", name.c_str());
    const ServiceManager serviceManager;

    serviceManager.tell("READY=1");

    EXPECT_EQ(receive(socket), "READY=1");
}

TEST(ServiceManager, HearsWhatItIsToldAtAnAbstractName)
{
    const std::string name = "@corvane-test-" + std::to_string(getpid());
    const auto socket = listenTo(name);
    const ScopedEnvironment variable("NOTIFY_SOCKET", name.c_str());

    ServiceManager().tell("STOPPING=1");

    EXPECT_EQ(receive(socket), "STOPPING=1");
}

TEST(ServiceManager, IsNotWaitedForWhenItDoesNotRead)
{
    const Corvane::Test::TemporaryDirectory folder;
    const std::string name = folder.getPath() + "/notify";
    const auto socket = listenTo(name);
    const ScopedEnvironment variable("NOTIFY_SOCKET", name.c_str());
    const ServiceManager serviceManager;

    for (int i = 0; i < 10000; ++i)
        serviceManager.tell("WATCHDOG=1");

    EXPECT_EQ(receive(socket), "WATCHDOG=1");
}

TEST(ServiceManager, IsToldNothingWhereThereIsNone)
{
    const ScopedEnvironment noSocket("NOTIFY_SOCKET", nullptr);
    EXPECT_NO_THROW(ServiceManager().tell("READY=1"));
    const ScopedEnvironment longName("NOTIFY_SOCKET", std::string(200, 'x').c_str());
    EXPECT_NO_THROW(ServiceManager().tell("READY=1"));
}

TEST(ServiceManager, WaitsForASignTwiceInItsDeadline)
{
    const ScopedEnvironment deadline("WATCHDOG_USEC", "30000000");
    EXPECT_EQ(ServiceManager().getWatchdogInterval(), std::chrono::seconds(15));
}

TEST(ServiceManager, WaitsForNoSignOfThisProcessWhenItMeansAnother)
{
    const ScopedEnvironment deadline("WATCHDOG_USEC", "30000000");
    const ScopedEnvironment pid("WATCHDOG_PID", std::to_string(getppid()).c_str());
    EXPECT_EQ(ServiceManager().getWatchdogInterval(), std::nullopt);
}

TEST(ServiceManager, WaitsForNoSignWhenItsDeadlineIsNone)
{
    for (const char* text : {"", "0", "-1", "soon", "1000x", "99999999999999999999"}) {
        const ScopedEnvironment deadline("WATCHDOG_USEC", text);
        EXPECT_EQ(ServiceManager().getWatchdogInterval(), std::nullopt) << text;
    }
}

} // namespace Procmand
