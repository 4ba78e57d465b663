#include "WindowFakes.h"

#include <typeinfo>

namespace Corvane::Test
{

using MouseEvent = IWindowEvent::MouseEvent;

namespace
{

const MouseEvent::Buttons NO_BUTTONS;

} // namespace

class WindowEvent : public WindowTest
{
protected:
    WindowEvent() { window.cursor = &cursor; }

    FakeCursor cursor;
    TestWindow window{{"program", "--application-type=player", "--location=100,50,640,480"}};
};

TEST_F(WindowEvent, PutsAGlobalCursorAtThePosition)
{
    window.handleEvent(MouseEvent(NO_BUTTONS, MouseEvent::Position(300, 400)));

    EXPECT_EQ(text(cursor.location), text(Rect(300, 400, 16, 24)));
}

TEST_F(WindowEvent, PutsARelativeCursorAtThePositionPlusTheWindows)
{
    cursor.global = false;

    window.handleEvent(MouseEvent(NO_BUTTONS, MouseEvent::Position(300, 400)));

    EXPECT_EQ(text(cursor.location), text(Rect(400, 450, 16, 24)));
}

TEST_F(WindowEvent, MovesAGlobalCursor)
{
    window.handleEvent(MouseEvent(NO_BUTTONS, MouseEvent::Movement(-3, 4, 99)));

    EXPECT_EQ(text(cursor.location), text(Rect(7, 24, 16, 24)));
}

TEST_F(WindowEvent, AddsTheWindowsPlaceToEveryMovementOfARelativeCursor)
{
    cursor.global = false;

    window.handleEvent(MouseEvent(NO_BUTTONS, MouseEvent::Movement(1, 2, 0)));
    EXPECT_EQ(text(cursor.location), text(Rect(111, 72, 16, 24)));

    window.handleEvent(MouseEvent(NO_BUTTONS, MouseEvent::Movement(1, 2, 0)));
    EXPECT_EQ(text(cursor.location), text(Rect(212, 124, 16, 24)));
}

TEST_F(WindowEvent, PrefersThePositionToTheMovement)
{
    window.handleEvent(MouseEvent(NO_BUTTONS, MouseEvent::Position(300, 400), MouseEvent::Movement(7, 7, 7)));

    EXPECT_EQ(text(cursor.location), text(Rect(300, 400, 16, 24)));
}

TEST_F(WindowEvent, TellsTheCursorItsPlaceAlsoForButtonsAlone)
{
    window.handleEvent(MouseEvent(MouseEvent::Buttons(true, false, false, true, false, false)));

    EXPECT_EQ(journal.read(), (Journal::Entries{"cursor.setLocation(" + text(Rect(10, 20, 16, 24)) + ")"}));
}

TEST_F(WindowEvent, AsksTheWindowsOwnLocationThroughTheOverrideOfASubclass)
{
    struct PlacedWindow : TestWindow {
        using TestWindow::getLocation;
        using TestWindow::TestWindow;
        Rect getLocation() override { return {1000, 2000, 1, 1}; }
    };
    PlacedWindow placed({"program", "--application-type=player"});
    placed.cursor = &cursor;
    cursor.global = false;

    placed.handleEvent(MouseEvent(NO_BUTTONS, MouseEvent::Position(1, 2)));

    EXPECT_EQ(text(cursor.location), text(Rect(1001, 2002, 16, 24)));
}

TEST_F(WindowEvent, ShowsTheCursorOfAFocusedWindowAfterItWasMoved)
{
    window.handleFocus(true);
    journal.clear();

    window.handleEvent(MouseEvent(NO_BUTTONS, MouseEvent::Position(1, 2)));

    EXPECT_EQ(journal.read(),
              (Journal::Entries{"cursor.setLocation(" + text(Rect(1, 2, 16, 24)) + ")", "cursor.setVisibility(true)"}));
}

TEST_F(WindowEvent, LeavesTheVisibilityOfTheCursorAloneWithoutFocus)
{
    window.handleEvent(MouseEvent(NO_BUTTONS, MouseEvent::Position(1, 2)));

    EXPECT_EQ(journal.read(), (Journal::Entries{"cursor.setLocation(" + text(Rect(1, 2, 16, 24)) + ")"}));
}

TEST_F(WindowEvent, HidesTheCursorThatTheApplicationParametersTurnOff)
{
    TestWindow silent({"program", "--application-type=player", "--application-parameters=url=x;really-no-cursors=1"});
    silent.cursor = &cursor;
    silent.handleFocus(true);

    silent.handleEvent(MouseEvent(NO_BUTTONS));

    EXPECT_FALSE(cursor.visibility);
}

TEST_F(WindowEvent, ChangesNothingForKeysAndCharacters)
{
    window.handleFocus(true);
    journal.clear();

    EXPECT_FALSE(window.handleEvent(IWindowEvent::KeyEvent(28, true)));
    EXPECT_FALSE(window.handleEvent(IWindowEvent::AsciiEvent('a', true)));

    EXPECT_TRUE(journal.read().empty());
}

TEST_F(WindowEvent, ChangesNothingWithoutACursor)
{
    window.cursor = nullptr;
    window.handleFocus(true);
    journal.clear();

    EXPECT_FALSE(window.handleEvent(MouseEvent(NO_BUTTONS, MouseEvent::Position(1, 2))));

    EXPECT_TRUE(journal.read().empty());
}

TEST_F(WindowEvent, IsNeverUsedUpByTheWindowItself)
{
    EXPECT_FALSE(window.handleEvent(MouseEvent(NO_BUTTONS, MouseEvent::Position(1, 2))));
}

TEST_F(WindowEvent, FailsWhenItOnlyCallsItselfAMouseEvent)
{
    struct Impostor : IWindowEvent::KeyEvent {
        using KeyEvent::KeyEvent;
        std::string getTypeName() const override { return MouseEvent::TYPE_NAME; }
    };

    EXPECT_THROW(window.handleEvent(Impostor(1, true)), std::bad_cast);
    EXPECT_TRUE(journal.read().empty());
}

} // namespace Corvane::Test
