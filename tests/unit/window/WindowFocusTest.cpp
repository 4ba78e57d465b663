#include "WindowFakes.h"

#include <cerrno>
#include <corvane/foundation/Exception.h>

namespace Corvane::Test
{

class WindowFocus : public WindowTest
{
protected:
    WindowFocus()
    {
        window.addListener(&listener);
        window.cursor = &cursor;
    }
    ~WindowFocus() override { window.removeListener(&listener); }

    FakeCursor cursor;
    TestWindow window{{"program", "--application-type=player", "--authorization-token=u1"}};
    RecordingWindowListener listener{"a"};
};

TEST_F(WindowFocus, IsGainedWithPriorityThenMouseThenListeners)
{
    window.handleFocus(true);

    EXPECT_TRUE(window.isFocused());
    EXPECT_EQ(journal.read(), (Journal::Entries{"setpriority(5)", "enableMouse", "a.onFocusChange(u1, false, true)"}));
    EXPECT_TRUE(driver->isMouseEnabled());
}

TEST_F(WindowFocus, IsLostWithCursorThenPriorityThenMouseThenListeners)
{
    window.handleFocus(true);
    journal.clear();

    window.handleFocus(false);

    EXPECT_FALSE(window.isFocused());
    EXPECT_EQ(journal.read(), (Journal::Entries{"cursor.setVisibility(false)", "setpriority(0)", "disableMouse",
                                                "a.onFocusChange(u1, true, false)"}));
    EXPECT_FALSE(driver->isMouseEnabled());
}

TEST_F(WindowFocus, IsCarriedOutInFullWhenItIsRepeated)
{
    window.handleFocus(true);
    journal.clear();

    window.handleFocus(true);

    EXPECT_EQ(journal.read(), (Journal::Entries{"setpriority(5)", "enableMouse", "a.onFocusChange(u1, true, true)"}));
}

TEST_F(WindowFocus, IsLostAlsoWithoutACursor)
{
    window.cursor = nullptr;

    window.handleFocus(false);

    EXPECT_EQ(journal.read(),
              (Journal::Entries{"setpriority(0)", "disableMouse", "a.onFocusChange(u1, false, false)"}));
}

TEST_F(WindowFocus, IsStoredBeforeThePriorityIsSetAndNotToldWhenThatIsRefused)
{
    priority.failure = EACCES;

    EXPECT_THROW(window.handleFocus(true), Exception);

    EXPECT_TRUE(window.isFocused());
    EXPECT_FALSE(driver->isMouseEnabled());
    EXPECT_EQ(journal.read(), (Journal::Entries{"setpriority(5)"}));
}

TEST_F(WindowFocus, ShowsTheCursorOnlyWithTheNextMouseEvent)
{
    cursor.visibility = false;

    window.handleFocus(true);
    EXPECT_FALSE(cursor.visibility);

    window.handleEvent(IWindowEvent::MouseEvent(IWindowEvent::MouseEvent::Buttons()));
    EXPECT_TRUE(cursor.visibility);
}

TEST_F(WindowFocus, LeavesKeyboardAndInfraredAlone)
{
    driver->enableKeyboard();

    window.handleFocus(true);
    window.handleFocus(false);

    EXPECT_TRUE(driver->isKeyboardEnabled());
    EXPECT_FALSE(driver->isIrEnabled());
}

} // namespace Corvane::Test
