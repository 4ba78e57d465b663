#include "FakeDirectFB.h"
#include <corvane/DFBCursor.h>
#include <gmock/gmock.h>

namespace Corvane::Test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A cursor on a layer where everything works; `dfb.calls` begins empty after init().
class DFBCursorTest : public ::testing::Test
{
protected:
    void initialise()
    {
        cursor.init();
        dfb.calls.clear();
    }

    FakeDirectFB dfb;
    DFBCursor cursor{&dfb, &dfb.layer, true};
};

/// Notes with which session index the operations are called.
class SessionCursor : public DFBCursor
{
public:
    using DFBCursor::DFBCursor;
    using DFBCursor::getLocation;
    using DFBCursor::getOpacity;
    using DFBCursor::getVisibility;
    using DFBCursor::setLocation;
    using DFBCursor::setOpacity;
    using DFBCursor::setVisibility;

    void setVisibility(const unsigned int& index, bool visibility) override
    {
        sessions.push_back(index);
        DFBCursor::setVisibility(index, visibility);
    }
    bool getVisibility(const unsigned int& index) override
    {
        sessions.push_back(index);
        return DFBCursor::getVisibility(index);
    }
    void setOpacity(const unsigned int& index, unsigned int opacity) override
    {
        sessions.push_back(index);
        DFBCursor::setOpacity(index, opacity);
    }
    unsigned int getOpacity(const unsigned int& index) override
    {
        sessions.push_back(index);
        return DFBCursor::getOpacity(index);
    }
    void setLocation(const unsigned int& index, const Rect& location) override
    {
        sessions.push_back(index);
        DFBCursor::setLocation(index, location);
    }
    Rect getLocation(const unsigned int& index) override
    {
        sessions.push_back(index);
        return DFBCursor::getLocation(index);
    }

    std::vector<unsigned int> sessions;
};

} // namespace

TEST_F(DFBCursorTest, CallsNothingOfDirectFBWhenItIsMade)
{
    EXPECT_THAT(dfb.calls, IsEmpty());
    EXPECT_TRUE(cursor.getVisibility(SESSION));
    EXPECT_EQ(cursor.getOpacity(SESSION), 255U);
    EXPECT_EQ(static_cast<unsigned int>(cursor.getCursorState()), 2U);
    EXPECT_FALSE(cursor.isCursorGlobal());
    EXPECT_FALSE(DFBCursor(&dfb, nullptr, false).getVisibility(SESSION));
    EXPECT_FALSE(DFBCursor(&dfb, nullptr, false).isCursorGlobal());
}

TEST_F(DFBCursorTest, CallsNothingOfDirectFBWhenItGoesWithoutAPicture)
{
    {
        DFBCursor another(&dfb, &dfb.layer, true);
    }
    EXPECT_THAT(dfb.calls, IsEmpty());
}

TEST_F(DFBCursorTest, LoadsThePictureAndInstallsItInThisOrder)
{
    cursor.init();

    EXPECT_THAT(dfb.calls, ElementsAre("CreateImageProvider(/usr/local/etc/cursor.png)", "GetSurfaceDescription()",
                                       "CreateSurface()", "RenderTo(whole surface)", "ImageProvider::Release()",
                                       "SetCursorShape(3,3)", "SetCursorOpacity(255)"));
    EXPECT_EQ(dfb.provider.destination, &dfb.surface);
    EXPECT_EQ(dfb.layer.shape, &dfb.surface);
}

TEST_F(DFBCursorTest, AsksForAVideoSurfaceOfThePicturesSizeInTheLayersFormat)
{
    cursor.init();

    EXPECT_EQ(static_cast<int>(dfb.description.flags), 7) << "capabilities, width and height, but no pixel format";
    EXPECT_EQ(static_cast<int>(dfb.description.caps), 4) << "video only";
    EXPECT_EQ(dfb.description.width, 24);
    EXPECT_EQ(dfb.description.height, 32);
}

TEST_F(DFBCursorTest, StaysHiddenWhenItIsMadeHidden)
{
    DFBCursor hidden(&dfb, &dfb.layer, false);
    hidden.init();

    EXPECT_EQ(dfb.calls.back(), "SetCursorOpacity(0)");
}

TEST_F(DFBCursorTest, StartsWithTheLowBitsOfAnOpacityThatWasSetBefore)
{
    cursor.setOpacity(SESSION, 300);
    cursor.init();

    EXPECT_EQ(dfb.calls.back(), "SetCursorOpacity(44)");
}

TEST_F(DFBCursorTest, ReleasesThePictureInTheEndAndNothingElse)
{
    {
        DFBCursor another(&dfb, &dfb.layer, true);
        another.init();
        dfb.calls.clear();
    }
    EXPECT_THAT(dfb.calls, ElementsAre("ReleaseSource()", "Surface::Release()"));
}

TEST_F(DFBCursorTest, HidesByOpacityZeroAndComesBackWithItsOpacity)
{
    cursor.setOpacity(SESSION, 300);
    dfb.calls.clear();
    cursor.setVisibility(SESSION, false);
    EXPECT_FALSE(cursor.getVisibility(SESSION));
    cursor.setVisibility(SESSION, true);
    EXPECT_TRUE(cursor.getVisibility(SESSION));

    EXPECT_THAT(dfb.calls, ElementsAre("SetCursorOpacity(0)", "SetCursorOpacity(44)"));
}

TEST_F(DFBCursorTest, GivesTheLayerTheLowBitsOfAnOpacityAndKeepsTheWholeOfIt)
{
    cursor.setOpacity(SESSION, 300);

    EXPECT_THAT(dfb.calls, ElementsAre("SetCursorOpacity(44)"));
    EXPECT_EQ(cursor.getOpacity(SESSION), 300U);
}

TEST_F(DFBCursorTest, OnlyRemembersAnOpacityWhileItIsHidden)
{
    cursor.setVisibility(SESSION, false);
    dfb.calls.clear();
    cursor.setOpacity(SESSION, 128);

    EXPECT_THAT(dfb.calls, ElementsAre("SetCursorOpacity(0)"));
    EXPECT_EQ(cursor.getOpacity(SESSION), 128U);
    cursor.setVisibility(SESSION, true);
    EXPECT_EQ(dfb.calls.back(), "SetCursorOpacity(128)");
}

TEST_F(DFBCursorTest, CallsNothingForAVisibilityOrAnOpacityThatItHas)
{
    cursor.setVisibility(SESSION, true);
    cursor.setOpacity(SESSION, 255);
    cursor.setOpacity(SESSION, 300);
    cursor.setVisibility(SESSION, false);
    dfb.calls.clear();
    cursor.setVisibility(SESSION, false);
    cursor.setOpacity(SESSION, 300);

    EXPECT_THAT(dfb.calls, IsEmpty());
}

TEST_F(DFBCursorTest, TellsOpacitiesApartThatTheLayerDoesNot)
{
    cursor.setOpacity(SESSION, 255 + 256);

    EXPECT_THAT(dfb.calls, ElementsAre("SetCursorOpacity(255)"));
    EXPECT_EQ(cursor.getOpacity(SESSION), 511U);
}

TEST_F(DFBCursorTest, WarpsToThePlaceOfARectangle)
{
    cursor.setLocation(SESSION, {-10, 20, 300, 400});

    EXPECT_THAT(dfb.calls, ElementsAre("GetCursorPosition()", "WarpCursor(-10,20)"));
}

TEST_F(DFBCursorTest, DoesNotWarpToWhereItIs)
{
    cursor.setLocation(SESSION, {5, 6, 300, 400});

    EXPECT_THAT(dfb.calls, ElementsAre("GetCursorPosition()"));
}

TEST_F(DFBCursorTest, WarpsWhenOneCoordinateDiffers)
{
    cursor.setLocation(SESSION, {5, 7, 0, 0});
    cursor.setLocation(SESSION, {6, 7, 0, 0});

    EXPECT_THAT(dfb.calls,
                ElementsAre("GetCursorPosition()", "WarpCursor(5,7)", "GetCursorPosition()", "WarpCursor(6,7)"));
}

TEST_F(DFBCursorTest, IsWhereTheLayersPointerIsAndAsLargeAsItsPicture)
{
    initialise();
    const ICursor::Rect location = cursor.getLocation(SESSION);

    EXPECT_EQ(location.serialize(), R"({"x":5,"y":6,"width":24,"height":32})");
    EXPECT_THAT(dfb.calls, ElementsAre("GetCursorPosition()", "GetSize()"));
}

TEST_F(DFBCursorTest, KeepsTheStateWithoutCallingDirectFB)
{
    cursor.setCursorState(ICursor::CURSOR_STATE_BUSY);
    EXPECT_EQ(cursor.getCursorState(), ICursor::CURSOR_STATE_BUSY);
    cursor.setCursorState(static_cast<ICursor::CursorState>(0x80000001U));
    EXPECT_EQ(static_cast<unsigned int>(cursor.getCursorState()), 0x80000001U);

    EXPECT_THAT(dfb.calls, IsEmpty());
}

TEST_F(DFBCursorTest, NeedsNoLayerForWhatItOnlyKeeps)
{
    DFBCursor floating(nullptr, nullptr, true);
    floating.setCursorState(ICursor::CURSOR_STATE_HIDDEN);

    EXPECT_EQ(floating.getCursorState(), ICursor::CURSOR_STATE_HIDDEN);
    EXPECT_TRUE(floating.getVisibility(SESSION));
    EXPECT_EQ(floating.getOpacity(SESSION), 255U);
}

TEST_F(DFBCursorTest, GoesByOneFixedSessionWhereNoneIsGiven)
{
    SessionCursor plain(&dfb, &dfb.layer, true);
    plain.init();
    ICursor& convenient = plain;
    convenient.setVisibility(false);
    EXPECT_FALSE(convenient.getVisibility());
    convenient.setOpacity(false);
    convenient.getOpacity();
    convenient.setLocation(ICursor::Rect(1, 2, 3, 4));
    EXPECT_EQ(convenient.getLocation().serialize(), R"({"x":1,"y":2,"width":24,"height":32})");

    EXPECT_EQ(plain.sessions, std::vector<unsigned int>(6, 0xDEADBEEFU));
}

TEST_F(DFBCursorTest, TakesAndGivesTheConvenientOpacityAsABool)
{
    ICursor& convenient = cursor;
    convenient.setOpacity(true);
    EXPECT_EQ(cursor.getOpacity(SESSION), 1U);
    EXPECT_TRUE(convenient.getOpacity());
    convenient.setOpacity(false);
    EXPECT_EQ(cursor.getOpacity(SESSION), 0U);
    EXPECT_FALSE(convenient.getOpacity());
    cursor.setOpacity(SESSION, 256);
    EXPECT_TRUE(convenient.getOpacity());

    EXPECT_THAT(dfb.calls, ElementsAre("SetCursorOpacity(1)", "SetCursorOpacity(0)", "SetCursorOpacity(0)"));
}

} // namespace Corvane::Test
