#include "screen/CompositorCheck.h"

#include "screen/CompositorDirectFB.h"

#include <csignal>
#include <gtest/gtest.h>
#include <stdexcept>
#include <unistd.h>

using testing::ExitedWithCode;

namespace
{

/// What DirectFB does in the test that runs.
void (*directFB)() = nullptr;

} // namespace

namespace Procmand
{

std::unique_ptr<IScreen> openDirectFBScreen(DirectFBTalk)
{
    directFB();
    return nullptr;
}

} // namespace Procmand

TEST(CompositorCheck, SaysOfWhatDirectFBDied)
{
    directFB = [] { std::raise(SIGKILL); }; // neither a sanitizer nor an emulator adds words of its own
    EXPECT_EXIT(Procmand::checkDirectFB(), ExitedWithCode(1),
                "^corvane-procmand: DirectFB does not start: it died of SIGKILL\n$");
}

TEST(CompositorCheck, SaysThatDirectFBDoesNotAnswer)
{
    directFB = [] { pause(); };
    EXPECT_EXIT(Procmand::checkDirectFB(std::chrono::milliseconds(50)), ExitedWithCode(1),
                "^corvane-procmand: DirectFB does not start: it has not answered in time\n$");
}

TEST(CompositorCheck, PassesOnWhatDirectFBSays)
{
    directFB = [] { throw std::runtime_error("DirectFB: no screen"); };
    EXPECT_EXIT(Procmand::checkDirectFB(), ExitedWithCode(1), "^corvane-procmand: DirectFB: no screen\n$");
    directFB = [] {};
    EXPECT_EXIT(Procmand::checkDirectFB(), ExitedWithCode(0), "^$");
}
