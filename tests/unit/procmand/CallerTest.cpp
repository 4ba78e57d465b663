#include "access/Caller.h"

#include <corvane/common/RPCClient.h>
#include <corvane/common/RPCServer.h>
#include <corvane/foundation/RPCObjects.h>
#include <corvane/foundation/ValueObjects.h>
#include <gtest/gtest.h>
#include <support/TemporaryDirectory.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Procmand
{
namespace
{

/// Tells its callers whether they are children of this process, and whether they are its process itself.
class KinServer : public Corvane::RPCServer
{
public:
    KinServer() : RPCServer("KIN")
    {
        interfaces["IKin"] = {{"isOwnChild", static_cast<Handler>(&KinServer::isOwnChild)},
                              {"isServer", static_cast<Handler>(&KinServer::isServer)}};
        RPCServer::init();
    }
    ~KinServer() override { RPCServer::shutdown(); }

private:
    using Request = Corvane::IRPC::RPCSynchronousMethodObject;

    static std::string answer(const Request& request, bool value)
    {
        return Corvane::IRPC::RPCResultObject(request, Corvane::BooleanObject(value)).serialize();
    }
    std::string isOwnChild(const Request& request) { return answer(request, Caller::getCurrent().isOwnChild()); }
    std::string isServer(const Request& request)
    {
        return answer(request, Caller::getCurrent().isOf(Process::find(getpid(), false).value()));
    }
};

/// @return whether the work was done
bool inChild(const std::function<bool()>& work)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(work() ? 0 : 1);
    int status = 1;
    waitpid(child, &status, 0);
    return status == 0;
}

bool isTrue(const char* method)
{
    return Corvane::RPCClient("KIN").call(method) == "true";
}

class CallerTest : public testing::Test
{
protected:
    Corvane::Test::TemporaryRuntime runtime;
    KinServer server;
};

} // namespace

TEST_F(CallerTest, IsAChildOfThisProcessWithItsWholeGroup)
{
    const auto isOwnChild = [] { return isTrue("IKin::isOwnChild"); };
    EXPECT_TRUE(inChild([&] { return setpgid(0, 0) == 0 && isOwnChild(); }));
    EXPECT_TRUE(inChild([&] { return setpgid(0, 0) == 0 && inChild(isOwnChild); }));
    EXPECT_FALSE(inChild([&] { return setpgid(0, 0) == 0 && inChild([&] { return setsid() > 0 && isOwnChild(); }); }));
    EXPECT_FALSE(isOwnChild());
}

TEST_F(CallerTest, IsOfItsOwnProcessAlone)
{
    EXPECT_TRUE(isTrue("IKin::isServer"));
    EXPECT_TRUE(inChild([] { return !isTrue("IKin::isServer"); }));
}

} // namespace Procmand
