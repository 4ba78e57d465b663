#include "WindowFakes.h"

/// The four properties of a window.
namespace Corvane::Test
{

class WindowProperties : public WindowTest
{
protected:
    WindowProperties() { window.addListener(&listener); }
    ~WindowProperties() override { window.removeListener(&listener); }

    TestWindow window{{"program", "--application-type=player", "--authorization-token=u1", "--z-order=3",
                       "--opacity=200", "--location=1,2,3,4"}};
    RecordingWindowListener listener{"a"};
};

TEST_F(WindowProperties, AreStoredAndTold)
{
    window.setVisibility(false);
    window.setOpacity(128);
    window.setZOrder(4294967295U);
    window.setLocation(Rect(-5, 6, 7, 8));

    EXPECT_FALSE(window.getVisibility());
    EXPECT_EQ(window.getOpacity(), 128U);
    EXPECT_EQ(window.getZOrder(), 4294967295U);
    EXPECT_EQ(text(window.getLocation()), text(Rect(-5, 6, 7, 8)));
    EXPECT_EQ(
        journal.read(),
        (Journal::Entries{"a.onVisibilityChange(u1, true, false)", "a.onOpacityChange(u1, 200, 128)",
                          "a.onZOrderChange(u1, 3, 4294967295)",
                          "a.onLocationChange(u1, " + text(Rect(1, 2, 3, 4)) + ", " + text(Rect(-5, 6, 7, 8)) + ")"}));
}

TEST_F(WindowProperties, AreToldAlsoWhenTheyStayTheSame)
{
    window.setVisibility(true);
    window.setOpacity(200);
    window.setZOrder(3);
    window.setLocation(Rect(1, 2, 3, 4));

    EXPECT_EQ(journal.read(), (Journal::Entries{"a.onVisibilityChange(u1, true, true)",
                                                "a.onOpacityChange(u1, 200, 200)", "a.onZOrderChange(u1, 3, 3)",
                                                "a.onLocationChange(u1, " + text(Rect(1, 2, 3, 4)) + ", " +
                                                    text(Rect(1, 2, 3, 4)) + ")"}));
}

TEST_F(WindowProperties, KeepAndTellTheLowEightBitsOfAnOpacity)
{
    window.setOpacity(256);
    EXPECT_EQ(window.getOpacity(), 0U);
    window.setOpacity(300);
    EXPECT_EQ(window.getOpacity(), 44U);

    EXPECT_EQ(journal.read(), (Journal::Entries{"a.onOpacityChange(u1, 200, 0)", "a.onOpacityChange(u1, 0, 44)"}));
}

TEST_F(WindowProperties, AreStoredBeforeTheyAreTold)
{
    unsigned int seen = 0;
    listener.action = [&] { seen = window.getZOrder(); };

    window.setZOrder(8);

    EXPECT_EQ(seen, 8U);
}

TEST_F(WindowProperties, AreSetThroughTheFormsForCallersAndForSurfaceIndices)
{
    IWindow& remote = window;
    remote.setOpacity("somebody", 1);
    remote.setZOrder(7U, 2U);
    remote.setVisibility(7U, false);
    remote.setLocation("somebody", Rect(9, 9, 9, 9));
    remote.handleFocus("somebody", true);

    EXPECT_EQ(remote.getOpacity(7U), 1U);
    EXPECT_EQ(remote.getZOrder("somebody"), 2U);
    EXPECT_FALSE(remote.getVisibility("somebody"));
    EXPECT_EQ(text(remote.getLocation(7U)), text(Rect(9, 9, 9, 9)));
    EXPECT_TRUE(remote.isFocused("somebody"));
}

TEST_F(WindowProperties, AreToldThroughTheOverrideOfASubclassFirst)
{
    struct ListeningWindow : TestWindow {
        using TestWindow::onOpacityChange;
        using TestWindow::TestWindow;
        void onOpacityChange(const std::string& uid, const unsigned int& oldValue,
                             const unsigned int& newValue) override
        {
            journal.add("override");
            TestWindow::onOpacityChange(uid, oldValue, newValue);
        }
    };
    ListeningWindow own({"program", "--application-type=player", "--authorization-token=u2"});
    own.addListener(&listener);

    own.setOpacity(1);
    own.removeListener(&listener);

    EXPECT_EQ(journal.read(), (Journal::Entries{"override", "a.onOpacityChange(u2, 255, 1)"}));
}

TEST_F(WindowProperties, LeaveTheHookForWebSocketsWithoutEffect)
{
    std::string id = "x";

    window.setInputWebSocketID(id, window);

    EXPECT_EQ(id, "x");
    EXPECT_TRUE(journal.read().empty());
}

} // namespace Corvane::Test
