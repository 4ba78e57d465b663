#include "DebugLines.h"
#include "FakeDirectFB.h"
#include <corvane/DFBCursor.h>
#include <corvane/foundation/Exception.h>
#include <functional>
#include <gmock/gmock.h>

namespace Corvane::Test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int NOTHING_THROWN = -1;

const char SHAPE_FAILED[] = "init: IDirectFBDisplayLayer::SetCursorShape failed!";

/// What an exception of the action says of itself.
struct Thrown {
    int code;
    std::string text;
};

Thrown thrownBy(const std::function<void()>& action)
{
    try {
        action();
    } catch (const Exception& exception) {
        return {static_cast<int>(exception.getCode()), exception.what()};
    }
    return {NOTHING_THROWN, ""};
}

class DFBCursorFailure : public ::testing::Test
{
protected:
    /// The action must fail with the code and its text and with this one report.
    void expectFailure(int code, const Report& report, const std::function<void()>& action)
    {
        const CapturedOutput output;
        const Thrown thrown = thrownBy(action);

        EXPECT_EQ(thrown.code, code) << report.line;
        EXPECT_EQ(thrown.text, code == 2 ? "Invalid state" : "Generic failure");
        expectReports(output, "DFBCursor", {report});
    }

    FakeDirectFB dfb;
    DFBCursor cursor{&dfb, &dfb.layer, true};
};

/// A call of init() that DirectFB refuses, how that is reported, and how far init() got.
struct InitFailure {
    const char* operation;
    Report report;
    std::size_t calls;
    bool keepsPicture;
};

const InitFailure INIT_FAILURES[] = {
    {"CreateImageProvider", {68, SHAPE_FAILED}, 1, false},
    {"GetSurfaceDescription", {73, SHAPE_FAILED}, 2, false},
    {"CreateSurface", {80, SHAPE_FAILED}, 3, false},
    {"RenderTo", {85, SHAPE_FAILED}, 4, true},
    {"ImageProvider::Release", {90, "init: Failure releasing IDirectFBImageProvider!"}, 5, true},
    {"SetCursorShape", {95, SHAPE_FAILED}, 6, true},
    {"SetCursorOpacity", {100, "init: IDirectFBDisplayLayer::SetCursorOpacity failed!"}, 7, true}};

} // namespace

TEST_F(DFBCursorFailure, ReportsEachStepOfTheInitialisationUnderItsLineAndEndsThere)
{
    for (const InitFailure& failure : INIT_FAILURES) {
        FakeDirectFB failingDirectFB;
        DFBCursor failing(&failingDirectFB, &failingDirectFB.layer, true);
        failingDirectFB.results[failure.operation] = DFB_FAILURE;
        expectFailure(7, failure.report, [&] { failing.init(); });

        const std::string& last = failingDirectFB.calls.back();
        EXPECT_EQ(last.substr(0, last.find('(')), failure.operation) << "no call comes after the one that failed";
        EXPECT_EQ(failingDirectFB.calls.size(), failure.calls);
        EXPECT_TRUE(failing.getVisibility(SESSION));
        EXPECT_EQ(failing.getOpacity(SESSION), 255U);
    }
}

TEST_F(DFBCursorFailure, LeavesThePictureOfAFailedInitialisationToTheDestructorWhereThereIsOne)
{
    for (const InitFailure& failure : INIT_FAILURES) {
        FakeDirectFB failingDirectFB;
        {
            DFBCursor failing(&failingDirectFB, &failingDirectFB.layer, true);
            failingDirectFB.results[failure.operation] = DFB_FAILURE;
            expectFailure(7, failure.report, [&] { failing.init(); });
            failingDirectFB.results.clear();
            failingDirectFB.calls.clear();
        }
        if (failure.keepsPicture)
            EXPECT_THAT(failingDirectFB.calls, ElementsAre("ReleaseSource()", "Surface::Release()"));
        else
            EXPECT_THAT(failingDirectFB.calls, IsEmpty()) << failure.operation;
    }
}

TEST_F(DFBCursorFailure, CountsAnyResultButOkAsAFailure)
{
    dfb.results["SetCursorOpacity"] = DFB_TEMPUNAVAIL;
    const CapturedOutput output;
    EXPECT_EQ(thrownBy([&] { cursor.setOpacity(SESSION, 1); }).code, 7);
}

TEST_F(DFBCursorFailure, NeedsALayerForWhatTheLayerShows)
{
    DFBCursor floating(&dfb, nullptr, true);
    expectFailure(2, {148, "setVisibility() invalid state!"}, [&] { floating.setVisibility(SESSION, false); });
    expectFailure(2, {148, "setVisibility() invalid state!"}, [&] { floating.setVisibility(SESSION, true); });
    expectFailure(2, {173, "setOpacity() invalid state!"}, [&] { floating.setOpacity(SESSION, 1); });
    expectFailure(2, {173, "setOpacity() invalid state!"}, [&] { floating.setOpacity(SESSION, 255); });
    expectFailure(2, {198, "setLocation() invalid state!"}, [&] { floating.setLocation(SESSION, {1, 2, 3, 4}); });
    expectFailure(2, {221, "getLocation() invalid state!"}, [&] { floating.getLocation(SESSION); });

    EXPECT_THAT(dfb.calls, IsEmpty());
    EXPECT_TRUE(floating.getVisibility(SESSION));
    EXPECT_EQ(floating.getOpacity(SESSION), 255U);
}

TEST_F(DFBCursorFailure, NeedsAPictureToTellItsLocation)
{
    expectFailure(2, {221, "getLocation() invalid state!"}, [&] { cursor.getLocation(SESSION); });
    EXPECT_THAT(dfb.calls, IsEmpty());
}

TEST_F(DFBCursorFailure, NeedsNoPictureToBeMovedShownAndFaded)
{
    cursor.setLocation(SESSION, {1, 2, 3, 4});
    cursor.setOpacity(SESSION, 1);
    cursor.setVisibility(SESSION, false);

    EXPECT_THAT(dfb.calls,
                ElementsAre("GetCursorPosition()", "WarpCursor(1,2)", "SetCursorOpacity(1)", "SetCursorOpacity(0)"));
}

TEST_F(DFBCursorFailure, KeepsTheVisibilityThatTheLayerRefusesToChange)
{
    dfb.results["SetCursorOpacity"] = DFB_ACCESSDENIED;
    expectFailure(7, {153, "setVisibility: IDirectFBDisplayLayer::SetCursorOpacity failed!"},
                  [&] { cursor.setVisibility(SESSION, false); });
    EXPECT_TRUE(cursor.getVisibility(SESSION));
}

TEST_F(DFBCursorFailure, KeepsTheOpacityThatTheLayerRefusesToChange)
{
    dfb.results["SetCursorOpacity"] = DFB_ACCESSDENIED;
    expectFailure(7, {178, "setOpacity: IDirectFBDisplayLayer::SetCursorOpacity failed!"},
                  [&] { cursor.setOpacity(SESSION, 128); });
    EXPECT_EQ(cursor.getOpacity(SESSION), 255U);
}

TEST_F(DFBCursorFailure, DoesNotMoveWhenItCannotLearnWhereItIs)
{
    dfb.results["GetCursorPosition"] = DFB_ACCESSDENIED;
    expectFailure(7, {204, "setLocation() IDirectFBDisplayLayer::GetCursorPosition failed!"}, [&] {
        cursor.setLocation(SESSION, {1, 2, 3, 4});
    });
    EXPECT_THAT(dfb.calls, ElementsAre("GetCursorPosition()"));
}

TEST_F(DFBCursorFailure, ReportsAWarpThatTheLayerRefuses)
{
    dfb.results["WarpCursor"] = DFB_ACCESSDENIED;
    expectFailure(7, {209, "setLocation() IDirectFBDisplayLayer::WarpCursor failed!"}, [&] {
        cursor.setLocation(SESSION, {1, 2, 3, 4});
    });
}

TEST_F(DFBCursorFailure, HasNoLocationWithoutAPosition)
{
    cursor.init();
    dfb.results["GetCursorPosition"] = DFB_ACCESSDENIED;
    expectFailure(7, {229, "getLocation() IDirectFBDisplayLayer::GetCursorPosition failed!"},
                  [&] { cursor.getLocation(SESSION); });
    EXPECT_EQ(dfb.calls.back(), "GetCursorPosition()") << "the size is not asked for any more";
}

TEST_F(DFBCursorFailure, HasNoLocationWithoutASize)
{
    cursor.init();
    dfb.results["GetSize"] = DFB_DEAD;
    expectFailure(7, {233, "getLocation() IDirectFBSurface::GetSize failed!"}, [&] { cursor.getLocation(SESSION); });
}

TEST_F(DFBCursorFailure, SupportsNoStackingAndSaysSoByTheExceptionAlone)
{
    DFBCursor floating(nullptr, nullptr, true);
    const std::function<void()> operations[] = {
        [&] { floating.setZOrder(SESSION, 1); }, [&] { floating.getZOrder(SESSION); },
        [&] { floating.bringToFront(SESSION); }, [&] { floating.sendToBack(SESSION); },
        [&] { floating.bringForward(SESSION); }, [&] { floating.sendBackward(SESSION); }};
    const CapturedOutput output;
    for (const auto& operation : operations) {
        const Thrown thrown = thrownBy(operation);
        EXPECT_EQ(thrown.code, 4);
        EXPECT_EQ(thrown.text, "Not supported");
    }
    EXPECT_EQ(output.getText(), "");
}

TEST_F(DFBCursorFailure, ReportsAPictureThatIsNotReleasedAndThrowsNothing)
{
    const CapturedOutput output;
    {
        DFBCursor another(&dfb, &dfb.layer, true);
        another.init();
        dfb.calls.clear();
        dfb.results["ReleaseSource"] = DFB_FAILURE;
        dfb.results["Surface::Release"] = DFB_FAILURE;
    }
    EXPECT_THAT(dfb.calls, ElementsAre("ReleaseSource()", "Surface::Release()"));
    expectReports(output, "DFBCursor",
                  {{111, "~DFBCursor: IDirectFBSurface::ReleaseSource failed!"},
                   {115, "~DFBCursor: IDirectFBSurface::Release failed!"}});
}

} // namespace Corvane::Test
