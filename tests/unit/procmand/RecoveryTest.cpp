#include "history/Recovery.h"

#include "history/EndRecord.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Procmand
{
namespace
{

using testing::ElementsAre;
using testing::SizeIs;

class RecoveryTest : public testing::Test
{
protected:
    static std::string start(const std::string& uid)
    {
        StartRecord record;
        record.uid = uid;
        record.pid = 7;
        record.startTime = "9";
        record.program = "/bin/player";
        return record.write();
    }
    static std::string end(const std::string& uid)
    {
        EndRecord record;
        record.uid = uid;
        return record.write();
    }
    static std::vector<std::string> uidsOf(const Recovery& recovery)
    {
        std::vector<std::string> uids;
        for (const auto& [uid, application] : recovery.applications)
            uids.push_back(uid + (application.hasEnded ? " has ended" : ""));
        return uids;
    }
};

} // namespace

TEST_F(RecoveryTest, TellsWhoRunsWhoIsToRunAgainAndWhoIsGone)
{
    const Recovery recovery = Recovery::read({start("runs"), start("ended"), start("waits"), start("gone"),
                                              start("again"), end("ended"), R"({"record":"waiting","uid":"waits"})",
                                              end("gone"), writeGoneRecord("gone"), end("again"), start("again")});

    EXPECT_THAT(uidsOf(recovery), ElementsAre("again", "ended has ended", "runs", "waits has ended"));
    EXPECT_THAT(recovery.past, SizeIs(3));
}

TEST_F(RecoveryTest, KeepsEverythingOfAStart)
{
    StartRecord record;
    record.time = "now";
    record.boot = "boot";
    record.uid = "a";
    record.pid = 7;
    record.startTime = "9";
    record.program = "/bin/player";
    record.phase = StartRecord::WAITING;
    record.restarts = 3;
    record.restartsInRow = 2;
    record.placement.emplace(WindowState{.index = 4, .uid = "a", .opacity = 7});
    record.placement->front = {"b", "c \"d\""};
    record.request = LaunchRequest::read(
        R"({"program":"player","arguments":["a \"b\""],"environment":{"FRUIT":"pear"},"workingDirectory":"/usr",)"
        R"("applicationType":"video","applicationParameters":"loud","restart":"always",)"
        R"("fresh":true,"compositingParameters":{"opacity":9}})");

    const StartRecord read = StartRecord::read(record.write());

    EXPECT_EQ(read.write(), record.write());
    EXPECT_EQ(read.placement->window.opacity, 7U);
    EXPECT_EQ(read.placement->front, record.placement->front);
    EXPECT_TRUE(read.request->fresh);
    EXPECT_EQ(read.request->arguments, std::vector<std::string>{"a \"b\""});
    EXPECT_EQ(read.request->environment.at("FRUIT"), "pear");
    EXPECT_EQ(read.request->compositingParameters.getOpacity(), 9U);
    EXPECT_EQ(read.request->restart, RestartMode::ALWAYS);
}

TEST_F(RecoveryTest, ReadsWhatEarlierVersionsWrote)
{
    const std::string end = R"({"record":"end","time":"now","uid":"a","pid":7,"program":"/bin/player","exitCode":1,)"
                            R"("signal":null,"state":"","previousState":"","ranAway":false,"wasStopped":false,)"
                            R"("restarts":0,"standardError":"words"})";
    const std::string start = R"({"record":"start","time":"now","boot":"boot","uid":"a","pid":7,"startTime":"9",)"
                              R"("program":"/bin/player","restarts":3})";
    const Recovery recovery = Recovery::read({end, start, R"({"record":"waiting","uid":"a"})"});

    EXPECT_THAT(uidsOf(recovery), ElementsAre("a has ended"));
    EXPECT_EQ(recovery.applications.at("a").start.restarts, 3U);
    EXPECT_EQ(recovery.applications.at("a").start.restartsInRow, 0U);
    ASSERT_THAT(recovery.past, SizeIs(1));
    EXPECT_EQ(recovery.past.front().text, end);
}

TEST_F(RecoveryTest, RemembersTheLastHundredEnds)
{
    std::vector<std::string> records;
    for (int i = 0; i < 103; ++i)
        records.push_back(end(std::to_string(i)));
    const Recovery recovery = Recovery::read(records);

    EXPECT_THAT(recovery.past, SizeIs(100));
    EXPECT_EQ(recovery.past.front().text, records[3]);
    EXPECT_EQ(recovery.past.back().text, records[102]);
}

TEST_F(RecoveryTest, TakesTheLastStateOfTheWindows)
{
    const WindowState a{.index = 1, .uid = "a", .visibility = false, .opacity = 9, .zOrder = 4, .location{1, 2, 3, 4}};
    const WindowState b{.index = 5, .uid = "b"};
    const Recovery recovery = Recovery::read({writeWindowsRecord({a}), writeWindowsRecord({b, a})});

    const Recovery later = Recovery::read({start("a"), writeWindowsRecord({a, b})});
    ASSERT_TRUE(later.applications.at("a").start.placement) << "where it was, should it have ended since";
    EXPECT_EQ(later.applications.at("a").start.placement->window.opacity, 9U);

    ASSERT_THAT(recovery.windows, SizeIs(2));
    EXPECT_EQ(recovery.windows[0].index, 5U);
    EXPECT_EQ(writeWindowsRecord({recovery.windows[1]}), writeWindowsRecord({a}));
}

TEST_F(RecoveryTest, LeavesOutWhatItCannotRead)
{
    const Recovery recovery =
        Recovery::read({"nonsense", R"({"record":"end"})", R"({"record":"later","uid":"a"})", "{}", start("runs")});

    EXPECT_THAT(uidsOf(recovery), ElementsAre("runs"));
    EXPECT_TRUE(recovery.past.empty());
}

} // namespace Procmand
