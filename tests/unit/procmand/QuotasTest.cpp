#include "access/Quotas.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace Procmand
{

TEST(QuotasTest, CountsTheLaunchesOfTheLastMinuteForEachUser)
{
    constexpr uid_t ONE = 1000;
    constexpr uid_t OTHER = 1001;
    const auto begin = Quotas::Clock::now();
    Quotas quotas;
    for (std::size_t i = 0; i < Quotas::LAUNCHES_A_MINUTE; ++i)
        quotas.countLaunch(ONE, begin + std::chrono::seconds(i / 2));
    EXPECT_THROW(quotas.countLaunch(ONE, begin + std::chrono::seconds(59)), std::runtime_error);
    EXPECT_NO_THROW(quotas.countLaunch(OTHER, begin + std::chrono::seconds(59)));

    // The first second had two launches.
    EXPECT_NO_THROW(quotas.countLaunch(ONE, begin + std::chrono::seconds(60)));
    EXPECT_NO_THROW(quotas.countLaunch(ONE, begin + std::chrono::seconds(60)));
    EXPECT_THROW(quotas.countLaunch(ONE, begin + std::chrono::seconds(60)), std::runtime_error);
}

} // namespace Procmand
