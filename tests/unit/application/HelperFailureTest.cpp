#include "ApplicationFixture.h"

#include <corvane/common/PlatformHelper.h>
#include <corvane/foundation/Exception.h>

// A program of its own: it replaces the constructor of the platform helper by one that fails.

namespace Corvane
{

namespace
{

/// Where the constructor failed. By the Singleton's rule that storage is left alone, so it is kept in sight here.
void* failedAt = nullptr;

struct HelperInstance : Singleton<PlatformHelper> {
    static bool exists() { return instance != nullptr; }
};

} // namespace

PlatformHelper::PlatformHelper(const std::string& token) : token(token)
{
    failedAt = this;
    throw Exception(RETURN_TIMED_OUT);
}

namespace Test
{
namespace
{

TEST_F(ApplicationTest, InitPassesOnWhatTheHelpersConstructorThrows)
{
    TestApplication application({"/usr/bin/program"});
    try {
        application.init();
        FAIL() << "no exception";
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.getCode(), RETURN_TIMED_OUT);
    }
    EXPECT_NE(failedAt, nullptr);
    EXPECT_FALSE(HelperInstance::exists());
    EXPECT_EQ(application.getState(), ILifecycleManagement::STATE_LOADING);
}

} // namespace
} // namespace Test
} // namespace Corvane
