#include "access/Audit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace Procmand
{
namespace
{

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

Audit::Deed refuse(const std::string& subject)
{
    return {.method = "I::f", .subject = subject, .problem = "no", .isRefused = true};
}

} // namespace

TEST(AuditTest, TellsWhoDidWhatInTheOrderOfTheDeeds)
{
    const Caller self = Caller::getCurrent();
    Audit audit;
    audit.note(self, {.method = "I::f", .subject = "a", .problem = ""});
    audit.note(self, refuse("b"));
    audit.note(self, {.method = "I::g", .subject = "c", .problem = "broken"});

    const std::string who = "\"pid\":" + std::to_string(getpid()) + ",\"user\":" + std::to_string(geteuid());
    const std::string all = audit.write(10);
    EXPECT_THAT(all, AllOf(HasSubstr(who), HasSubstr("test-procmand")));
    EXPECT_LT(all.find(R"("subject":"a","outcome":"accepted")"), all.find(R"("subject":"b","outcome":"refused")"));
    EXPECT_LT(all.find(R"("subject":"b")"), all.find(R"("subject":"c","outcome":"failed","problem":"broken")"));
    EXPECT_THAT(audit.write(1), AllOf(HasSubstr("\"c\""), Not(HasSubstr("\"b\""))));
}

TEST(AuditTest, KeepsTheLatestAndOfEachNoMoreThanTellsSomething)
{
    const Caller self = Caller::getCurrent();
    Audit audit;
    audit.note(self, {.method = "I::f", .subject = "deed", .problem = ""});
    for (std::size_t i = 0; i < 3 * Audit::LIMIT; ++i)
        audit.note(self, refuse("number " + std::to_string(i) + std::string(100000, 'x')));
    const std::string all = audit.write(1000);
    EXPECT_THAT(all, AllOf(HasSubstr("deed"), Not(HasSubstr("number 511x")), HasSubstr("number 512x")));
    EXPECT_LT(all.size(), 1000 * Audit::LIMIT);
}

} // namespace Procmand
