#include <corvane/common/PlatformHelper.h>

#include <corvane/common/FileDescriptor.h>
#include <corvane/common/RPCServer.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <support/Await.h>
#include <support/CapturedOutput.h>
#include <support/TemporaryDirectory.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Corvane::Test
{
namespace
{

/// Sees what the Singleton keeps to itself.
struct Instance : Singleton<PlatformHelper> {
    static PlatformHelper* get() { return instance; }
    static unsigned int count() { return references; }
};

TEST(PlatformHelper, BecomesTheInstanceWithOneReference)
{
    auto* helper = new PlatformHelper("token");
    EXPECT_EQ(Instance::get(), helper);
    EXPECT_EQ(Instance::count(), 1u);

    delete helper;
    EXPECT_EQ(Instance::get(), nullptr);
    EXPECT_EQ(Instance::count(), 0u);
}

TEST(PlatformHelper, IsLeftAloneWhenItIsAFurtherOne)
{
    auto* helper = new PlatformHelper("");
    auto* further = new PlatformHelper("a token that is longer than what a short text holds without memory");
    auto* third = new PlatformHelper("another token that is longer than what a short text holds without memory");
    EXPECT_EQ(Instance::get(), helper);
    EXPECT_EQ(Instance::count(), 1u);

    delete third;
    delete further;
    EXPECT_EQ(Instance::get(), helper);
    EXPECT_EQ(Instance::count(), 1u);
    further->startHelper();

    delete helper;
    EXPECT_EQ(Instance::get(), nullptr);
    delete further;
    EXPECT_EQ(Instance::get(), nullptr);
}

TEST(PlatformHelper, MayFollowOneThatIsGone)
{
    delete new PlatformHelper("");
    auto* next = new PlatformHelper("");
    EXPECT_EQ(Instance::get(), next);
    delete next;
}

/// A process manager that hears of applications.
class HearingManager : public RPCServer
{
public:
    HearingManager() : RPCServer("ORU")
    {
        interfaces["IApplicationManager"]["registerApplication"] =
            static_cast<Handler>(&HearingManager::registerApplication);
        init();
    }
    ~HearingManager() override { RPCServer::shutdown(); }

    std::string registerApplication(const IRPC::RPCSynchronousMethodObject& request)
    {
        registrations.put(request.getParameters());
        return IRPC::RPCReturnObject(request).serialize();
    }

    Mailbox<std::string> registrations;
};

TEST(PlatformHelper, RegistersTheProcessUnderItsToken)
{
    const TemporaryRuntime runtime;
    HearingManager manager;
    const CapturedOutput error;
    auto* helper = new PlatformHelper("to\"ken");
    helper->startHelper();

    std::string registration;
    ASSERT_TRUE(manager.registrations.take(registration));
    EXPECT_EQ(registration, R"({"uid":"to\"ken","pid":)" + std::to_string(getpid()) + "}");
    EXPECT_EQ(error.getText(), "");
    delete helper;
}

TEST(PlatformHelper, RegistersTheProcessUnderItsIdWhereThereIsNoToken)
{
    const TemporaryRuntime runtime;
    HearingManager manager;
    auto* helper = new PlatformHelper("");
    helper->startHelper();

    std::string registration;
    ASSERT_TRUE(manager.registrations.take(registration));
    const std::string id = std::to_string(getpid());
    EXPECT_EQ(registration, R"({"uid":")" + id + R"(","pid":)" + id + "}");
    delete helper;
}

TEST(PlatformHelper, LogsOneLineWithoutAProcessManager)
{
    const TemporaryRuntime runtime;
    auto* helper = new PlatformHelper("token");
    static_assert(noexcept(helper->startHelper()));
    const CapturedOutput error;
    helper->startHelper();

    ASSERT_EQ(error.getMessages().size(), 1u);
    EXPECT_THAT(error.getMessages().front(), testing::StartsWith("not registered with a process manager: "));
    EXPECT_EQ(Instance::get(), helper);
    delete helper;
}

TEST(PlatformHelper, LogsOneLineWhereTheRuntimeFolderCannotBeUsed)
{
    const ScopedEnvironment longFolder("CORVANE_RUNTIME_DIR", std::string(200, 'x').c_str());
    auto* helper = new PlatformHelper("token");
    const CapturedOutput error;
    helper->startHelper();

    EXPECT_EQ(error.getMessages().size(), 1u);
    delete helper;
}

TEST(PlatformHelper, DoesNotWaitForAManagerThatTakesNobody)
{
    const TemporaryRuntime runtime;
    const FileDescriptor manager(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    RPCServer("ORU").getFixedRPCAddress().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(manager.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(manager.get(), 0), 0);
    auto* helper = new PlatformHelper("token");
    const CapturedOutput error;

    // The queue of those who wait to be accepted is full soon. Were the helper to wait, this would never end.
    while (error.getMessages().empty())
        helper->startHelper();

    EXPECT_THAT(error.getMessages().front(), testing::StartsWith("not registered with a process manager: "));
    delete helper;
}

} // namespace
} // namespace Corvane::Test
