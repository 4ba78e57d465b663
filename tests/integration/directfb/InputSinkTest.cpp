#include "Screen.h"
#include <corvane/DFBInputSink.h>
#include <corvane/interfaces/IWindowEvent.h>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

namespace Corvane::Test
{

namespace
{

using MouseEvent = IWindowEvent::MouseEvent;
using Buttons = MouseEvent::Buttons;

class DirectFBInputSink : public ::testing::Test
{
protected:
    IDirectFBEventBuffer* buffer() { return sink.getEventBuffer(); }

    /// The next event of the buffer must be there, of the input class and have these flags besides DirectFB's own.
    DFBInputEvent take(DFBInputEventFlags flags)
    {
        DFBEvent event{};
        EXPECT_EQ(buffer()->WaitForEventWithTimeout(buffer(), 5, 0), DFB_OK);
        EXPECT_EQ(buffer()->GetEvent(buffer(), &event), DFB_OK);
        EXPECT_EQ(event.clazz, DFEC_INPUT);
        EXPECT_EQ(event.input.flags, flags | DIEF_GLOBAL);
        return event.input;
    }

    void expectAxis(DFBInputEventFlags flags, DFBInputDeviceAxisIdentifier axis, int axisrel)
    {
        const DFBInputEvent input = take(flags);
        EXPECT_EQ(input.type, DIET_AXISMOTION);
        EXPECT_EQ(input.device_id, static_cast<DFBInputDeviceID>(DIDID_MOUSE));
        EXPECT_EQ(input.axis, axis);
        EXPECT_EQ(input.axisrel, axisrel);
    }

    void expectButton(DFBInputEventType type, DFBInputDeviceButtonIdentifier button)
    {
        const DFBInputEvent input = take(DIEF_BUTTONS);
        EXPECT_EQ(input.type, type);
        EXPECT_EQ(input.device_id, static_cast<DFBInputDeviceID>(DIDID_MOUSE));
        EXPECT_EQ(input.button, button);
        EXPECT_EQ(static_cast<int>(input.buttons), 0);
    }

    void expectKey(DFBInputEventType type, DFBInputDeviceKeyIdentifier identifier, DFBInputDeviceKeySymbol symbol)
    {
        const DFBInputEvent input = take(DIEF_NONE);
        EXPECT_EQ(input.type, type);
        EXPECT_EQ(input.key_id, identifier);
        EXPECT_EQ(input.key_symbol, symbol);
        EXPECT_EQ(static_cast<int>(input.modifiers), 0);
    }

    void expectNothingMore() { EXPECT_EQ(buffer()->HasEvent(buffer()), DFB_BUFFEREMPTY); }

    DFBInputSink sink{Screen::dfb()};
};

} // namespace

TEST_F(DirectFBInputSink, BeginsWithAnEmptyBuffer)
{
    DFBEvent event{};
    ASSERT_NE(buffer(), nullptr);
    EXPECT_EQ(buffer()->GetEvent(buffer(), &event), DFB_BUFFEREMPTY);
}

TEST_F(DirectFBInputSink, GivesKeysAndCharactersAsTheyWereWritten)
{
    sink.dispatchEvent(IWindowEvent::KeyEvent(KEY_ENTER, true));
    sink.dispatchEvent(IWindowEvent::KeyEvent(KEY_ENTER, false));
    sink.dispatchEvent(IWindowEvent::KeyEvent(KEY_RED, true));
    sink.dispatchEvent(IWindowEvent::AsciiEvent('Q', true));
    sink.dispatchEvent(IWindowEvent::AsciiEvent('Q', false));

    expectKey(DIET_KEYPRESS, DIKI_ENTER, DIKS_ENTER);
    expectKey(DIET_KEYRELEASE, DIKI_ENTER, DIKS_ENTER);
    expectKey(DIET_KEYPRESS, DIKI_UNKNOWN, DIKS_RED);
    expectKey(DIET_KEYPRESS, DIKI_Q, DIKS_CAPITAL_Q);
    expectKey(DIET_KEYRELEASE, DIKI_Q, DIKS_CAPITAL_Q);
    expectNothingMore();
}

TEST_F(DirectFBInputSink, GivesButtonsAndAPositionAsTheyWereWritten)
{
    sink.dispatchEvent(MouseEvent(Buttons(true, false, false, true, true, true), MouseEvent::Position(10, 20),
                                  MouseEvent::Movement(0, 0, -1)));

    expectButton(DIET_BUTTONPRESS, DIBI_LEFT);
    expectButton(DIET_BUTTONRELEASE, DIBI_MIDDLE);
    expectButton(DIET_BUTTONRELEASE, DIBI_RIGHT);
    expectAxis(DIEF_AXISABS, DIAI_X, 10);
    expectAxis(DIEF_AXISABS, DIAI_Y, 20);
    expectAxis(DIEF_AXISABS, DIAI_Z, -1);
    expectNothingMore();
}

TEST_F(DirectFBInputSink, GivesAMovementAsItWasWritten)
{
    sink.dispatchEvent(MouseEvent(Buttons(), MouseEvent::Movement(-7, 0, 3)));

    expectAxis(DIEF_AXISREL, DIAI_X, -7);
    expectAxis(DIEF_AXISREL, DIAI_Z, 3);
    expectNothingMore();
}

TEST_F(DirectFBInputSink, KeepsTheOrderOfManyEvents)
{
    for (int i = 1; i <= 1000; ++i)
        sink.dispatchEvent(MouseEvent(Buttons(), MouseEvent::Movement(i, 0, 0)));

    for (int i = 1; i <= 1000; ++i)
        expectAxis(DIEF_AXISREL, DIAI_X, i);
    expectNothingMore();
}

} // namespace Corvane::Test
