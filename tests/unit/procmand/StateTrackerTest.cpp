#include "supervision/StateTracker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <support/Await.h>
#include <support/TemporaryDirectory.h>
#include <thread>

namespace Procmand
{
namespace
{

using testing::ElementsAre;

std::string change(const std::string& oldState, const std::string& newState)
{
    return R"({"uid":"tester","oldState":")" + oldState + R"(","newState":")" + newState + "\"}";
}

/// An application that is listened to; what it announces goes to the box, as the supervisor passes it on.
class StateTrackerTest : public testing::Test
{
protected:
    StateTrackerTest() { states.onConnected(application); }

    void hear(const std::string& oldState, const std::string& newState)
    {
        if (states.onAnnounced(application, oldState, newState))
            heard.push_back(change(oldState, newState));
    }

    Corvane::Test::TemporaryDirectory state;
    std::vector<std::string> heard;
    Box box{Settings{.stateFolder = state.getPath()}, [this](const std::string& name, const std::string& payload) {
                EXPECT_EQ(name, "IApplication::onStateChange");
                heard.push_back(payload);
            }};
    StateTracker states{box};
    ManagedApplication& application = box.registry.add("tester");
};

} // namespace

TEST_F(StateTrackerTest, AnnouncesAStateThatWasReachedBeforeAnyoneListened)
{
    std::thread looper([this] { box.loop.run(); });
    {
        std::lock_guard guard(box.lock);
        states.onTold(application, "RUNNING");
        EXPECT_EQ(application.state, "RUNNING") << "it is known at once";
    }
    EXPECT_TRUE(Corvane::Test::await([this] {
        std::lock_guard guard(box.lock);
        return !heard.empty();
    }));
    box.loop.stop();
    looper.join();
    hear("RUNNING", "SUSPENDING");

    EXPECT_THAT(heard, ElementsAre(change("UNINITIALIZED", "RUNNING"), change("RUNNING", "SUSPENDING")));
}

TEST_F(StateTrackerTest, LeavesItToTheApplicationWhenItsOwnWordComesInTime)
{
    states.onTold(application, "RUNNING");
    hear("UNINITIALIZED", "LOADING");
    hear("LOADING", "RUNNING");
    states.flush(application);

    EXPECT_THAT(heard, ElementsAre(change("UNINITIALIZED", "LOADING"), change("LOADING", "RUNNING")));
}

TEST_F(StateTrackerTest, DropsAnAnnouncementOfWhatWasAnnouncedInItsNameAlready)
{
    states.onTold(application, "RUNNING");
    states.flush(application);
    hear("LOADING", "RUNNING");
    hear("RUNNING", "SUSPENDING");
    hear("SUSPENDING", "RUNNING");

    EXPECT_THAT(heard, ElementsAre(change("UNINITIALIZED", "RUNNING"), change("RUNNING", "SUSPENDING"),
                                   change("SUSPENDING", "RUNNING")));
}

TEST_F(StateTrackerTest, LearnsFromTheFirstAnnouncementWhatCameBeforeIt)
{
    hear("RUNNING", "ABORTED");
    EXPECT_THAT(heard, ElementsAre(change("UNINITIALIZED", "RUNNING"), change("RUNNING", "ABORTED")));

    states.onTold(application, "RUNNING");
    states.flush(application);
    EXPECT_EQ(application.state, "ABORTED") << "the answer is older";
    EXPECT_EQ(heard.size(), 2U);
}

TEST_F(StateTrackerTest, AnnouncesOnALaterLinkWhatIsNewOnly)
{
    hear("UNINITIALIZED", "RUNNING");
    states.onConnected(application);
    states.onTold(application, "RUNNING");
    states.flush(application);
    EXPECT_EQ(heard.size(), 1U);

    states.onConnected(application);
    states.onTold(application, "SUSPENDED");
    states.onConnected(application);
    EXPECT_EQ(heard.back(), change("RUNNING", "SUSPENDED"));
}

TEST_F(StateTrackerTest, KeepsTheVerdictOnARunaway)
{
    application.ranAway = true;
    application.state = "RUNAWAY";
    states.onTold(application, "RUNNING");
    states.flush(application);

    EXPECT_EQ(application.state, "RUNAWAY");
    EXPECT_THAT(heard, ElementsAre(change("UNINITIALIZED", "RUNNING")));
}

} // namespace Procmand
