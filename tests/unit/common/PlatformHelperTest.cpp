#include <corvane/common/PlatformHelper.h>

#include <gtest/gtest.h>

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

TEST(PlatformHelper, StartsWithoutAProcessManager)
{
    auto* helper = new PlatformHelper("token");
    static_assert(noexcept(helper->startHelper()));
    helper->startHelper();
    helper->startHelper();
    EXPECT_EQ(Instance::get(), helper);
    delete helper;
}

} // namespace
} // namespace Corvane::Test
