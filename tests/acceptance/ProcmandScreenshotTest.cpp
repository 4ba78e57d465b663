#include "Picture.h"
#include "ProcmandFixture.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <corvane/common/RPCError.h>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <sstream>

using namespace Corvane::Test;
using testing::HasSubstr;

namespace
{

constexpr std::uint32_t BACKGROUND = 0xFF101820;
constexpr std::uint32_t FRAME = 0xFFFFC020;

struct Place {
    int x;
    int y;
};

/// Two windows that overlap: the first covers 40,40 to 239,159, the second 140,100 to 339,219. The upper rows of a
/// window carry its name, so the colours are looked at further down.
constexpr const char* LEFT = R"({"x":40,"y":40,"width":200,"height":120})";
constexpr const char* RIGHT = R"({"x":140,"y":100,"width":200,"height":120})";
constexpr Place ON_NONE{620, 470};
constexpr Place ON_LEFT{60, 150};
constexpr Place ON_BOTH{200, 150};
constexpr Place ON_RIGHT{320, 200};

std::uint32_t blend(std::uint32_t front, std::uint32_t back, unsigned int opacity)
{
    std::uint32_t mixed = 0xFF000000;
    for (const unsigned int shift : {0U, 8U, 16U})
        mixed |= ((front >> shift & 0xFF) * opacity + (back >> shift & 0xFF) * (255 - opacity)) / 255 << shift;
    return mixed;
}

/// Whether each part of two colours is the same but for rounding.
bool isAlike(std::uint32_t one, std::uint32_t other)
{
    const std::array shifts{0U, 8U, 16U};
    return std::all_of(shifts.begin(), shifts.end(), [one, other](unsigned int shift) {
        return std::abs(static_cast<int>(one >> shift & 0xFF) - static_cast<int>(other >> shift & 0xFF)) <= 2;
    });
}

class ProcmandScreenshot : public WithProcmand
{
protected:
    ProcmandScreenshot() { setenv("DFBARGS", "system=dummy,mode=640x480", 1); }
    ~ProcmandScreenshot() override { unsetenv("DFBARGS"); }

    /// Starts a process manager that draws.
    void startDrawing() { startProcmand({"--compositor", "directfb"}); }
    void startWithTwoWindows()
    {
        startDrawing();
        left = launchWindow(LEFT);
        right = launchWindow(RIGHT);
    }

    std::string launchWindow(const std::string& location)
    {
        return launchVictim("", R"("compositingParameters":{"location":)" + location + "}");
    }
    /// What comes of a call with the index of the application's window, and a value.
    void change(const std::string& uid, const std::string& operation, const std::string& value = "")
    {
        std::istringstream lines(corvanectl({"windows", "--json"}).output);
        for (std::string line; std::getline(lines, line);)
            if (auto window = readMembers(line); window["uid"] == uid)
                call("IWindowCompositing::" + operation,
                     "{\"index\":" + window["index"] + (value.empty() ? "" : "," + value) + "}");
    }
    std::string fileName() const { return state.getPath() + "/box.png"; }
    Picture takePicture()
    {
        const Outcome outcome = corvanectl({"screenshot", fileName()});
        if (outcome.status != 0)
            throw std::runtime_error(outcome.error);
        return readPicture(fileName());
    }
    /// The pixels of these rows of the left window that have not its colour.
    static std::vector<std::pair<int, int>> lettersOf(const Picture& picture, int firstRow, int endRow)
    {
        const std::uint32_t colour = picture.at(ON_LEFT.x, ON_LEFT.y);
        std::vector<std::pair<int, int>> letters;
        for (int y = firstRow; y < endRow; ++y)
            for (int x = 48; x < 228; ++x)
                if (picture.at(x, y) != colour)
                    letters.emplace_back(x, y);
        return letters;
    }
    static int countPictures()
    {
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(std::getenv("CORVANE_RUNTIME_DIR")))
            count += entry.path().extension() == ".png" ? 1 : 0;
        return count;
    }
    std::uint32_t look(Place place) { return takePicture().at(place.x, place.y); }

    std::string left;
    std::string right;
};

} // namespace

TEST_F(ProcmandScreenshot, ShowsTheBackgroundWhereNoWindowIs)
{
    startDrawing();
    const Picture picture = takePicture();

    EXPECT_EQ(picture.width, 640);
    EXPECT_EQ(picture.height, 480);
    EXPECT_EQ(std::count(picture.pixels.begin(), picture.pixels.end(), BACKGROUND), 640 * 480);
}

TEST_F(ProcmandScreenshot, ShowsEachWindowAtItsPlaceAndTheLaterOneInFront)
{
    startWithTwoWindows();
    const Picture picture = takePicture();
    const std::uint32_t leftColour = picture.at(ON_LEFT.x, ON_LEFT.y);
    const std::uint32_t rightColour = picture.at(ON_RIGHT.x, ON_RIGHT.y);

    EXPECT_NE(leftColour, rightColour);
    EXPECT_NE(leftColour, BACKGROUND);
    EXPECT_NE(rightColour, BACKGROUND);
    EXPECT_EQ(picture.at(ON_BOTH.x, ON_BOTH.y), rightColour);
    EXPECT_EQ(picture.at(ON_NONE.x, ON_NONE.y), BACKGROUND);
    EXPECT_EQ(picture.at(40, 159), leftColour);
    EXPECT_EQ(picture.at(39, 159), BACKGROUND);
    EXPECT_EQ(picture.at(40, 160), BACKGROUND);
    EXPECT_EQ(picture.at(339, 219), rightColour);
    EXPECT_EQ(picture.at(340, 219), BACKGROUND);
    EXPECT_EQ(picture.at(339, 220), BACKGROUND);
}

TEST_F(ProcmandScreenshot, BlendsAWindowThatIsHalfTransparentWithWhatIsBehindIt)
{
    startWithTwoWindows();
    const std::uint32_t leftColour = look(ON_LEFT);
    const std::uint32_t rightColour = look(ON_RIGHT);
    change(right, "setOpacity", "\"opacity\":128");
    const Picture picture = takePicture();

    EXPECT_PRED2(isAlike, picture.at(ON_BOTH.x, ON_BOTH.y), blend(rightColour, leftColour, 128));
    EXPECT_PRED2(isAlike, picture.at(ON_RIGHT.x, ON_RIGHT.y), blend(rightColour, BACKGROUND, 128));
    EXPECT_EQ(picture.at(ON_LEFT.x, ON_LEFT.y), leftColour);
}

TEST_F(ProcmandScreenshot, LeavesAHiddenWindowOutAndShowsItAgain)
{
    startWithTwoWindows();
    const std::uint32_t leftColour = look(ON_LEFT);
    const std::uint32_t rightColour = look(ON_RIGHT);
    change(right, "setVisibility", "\"visibility\":false");
    EXPECT_EQ(look(ON_BOTH), leftColour);
    EXPECT_EQ(look(ON_RIGHT), BACKGROUND);

    change(right, "setVisibility", "\"visibility\":true");
    EXPECT_EQ(look(ON_BOTH), rightColour);
}

TEST_F(ProcmandScreenshot, FollowsTheOrderOfTheStackAlsoWhereZOrdersAreTheSame)
{
    startWithTwoWindows();
    const std::uint32_t leftColour = look(ON_LEFT);
    const std::uint32_t rightColour = look(ON_RIGHT);
    ASSERT_EQ(look(ON_BOTH), rightColour);

    change(right, "sendToBack"); // both keep z-order 0
    EXPECT_EQ(look(ON_BOTH), leftColour);
    change(right, "setZOrder", "\"zorder\":5");
    EXPECT_EQ(look(ON_BOTH), rightColour);
    change(left, "bringToFront");
    EXPECT_EQ(look(ON_BOTH), leftColour);
}

TEST_F(ProcmandScreenshot, MovesAndResizesAWindow)
{
    startWithTwoWindows();
    const std::uint32_t leftColour = look(ON_LEFT);
    change(left, "setLocation", R"("location":{"x":400,"y":300,"width":100,"height":150})");
    Picture picture = takePicture();
    EXPECT_EQ(picture.at(ON_LEFT.x, ON_LEFT.y), BACKGROUND);
    EXPECT_EQ(picture.at(499, 449), leftColour);
    EXPECT_EQ(picture.at(500, 449), BACKGROUND);
    EXPECT_EQ(picture.at(499, 450), BACKGROUND);

    change(left, "setLocation", R"("location":{"x":-50,"y":400,"width":100,"height":1000})");
    picture = takePicture();
    EXPECT_EQ(picture.at(0, 479), leftColour);
    EXPECT_EQ(picture.at(49, 479), leftColour);
    EXPECT_EQ(picture.at(50, 479), BACKGROUND);
    EXPECT_EQ(picture.at(450, 400), BACKGROUND);
}

TEST_F(ProcmandScreenshot, FramesTheWindowThatHasTheFocus)
{
    startWithTwoWindows();
    const std::uint32_t rightColour = look(ON_RIGHT);
    ASSERT_EQ(corvanectl({"focus", right, "on"}).status, 0);
    Picture picture = takePicture();
    for (const Place place : {Place{140, 200}, Place{143, 200}, Place{339, 200}, Place{240, 100}, Place{240, 219}})
        EXPECT_EQ(picture.at(place.x, place.y), FRAME) << place.x << "," << place.y;
    EXPECT_EQ(picture.at(144, 200), rightColour);

    corvanectl({"focus", left, "on"});
    picture = takePicture();
    EXPECT_EQ(picture.at(140, 200), rightColour);
    EXPECT_EQ(picture.at(40, 150), FRAME);
}

TEST_F(ProcmandScreenshot, WritesNameTypeAndProgramIntoTheWindowAndTheUidBelow)
{
    startDrawing();
    const auto letter = [this](const std::string& name) {
        const std::string uid = launchVictim("", R"("uid":"one","name":")" + name +
                                                     R"(","compositingParameters":{"location":)" + LEFT + "}");
        const Picture picture = takePicture();
        corvanectl({"stop", uid});
        return std::pair(lettersOf(picture, 48, 67), lettersOf(picture, 68, 87));
    };
    const auto [kitchen, uid] = letter("kitchen");
    const auto [hall, sameUid] = letter("hall");

    for (const std::size_t count : {kitchen.size(), uid.size(), hall.size()}) {
        EXPECT_GT(count, 30U);
        EXPECT_LT(count, 19U * 180U / 2);
    }
    EXPECT_NE(kitchen, hall);
    EXPECT_EQ(uid, sameUid);
}

TEST_F(ProcmandScreenshot, ForgetsTheWindowOfAnApplicationThatHasEnded)
{
    startWithTwoWindows();
    const std::uint32_t leftColour = look(ON_LEFT);
    kill(pidOf(right), SIGKILL);
    ASSERT_NE(announcements.take({"IWindowCompositing::onWindowRelease", right}), "");

    EXPECT_EQ(look(ON_BOTH), leftColour);
    EXPECT_EQ(look(ON_RIGHT), BACKGROUND);
}

TEST_F(ProcmandScreenshot, SaysThatTheFileCannotBeWritten)
{
    startDrawing();
    const Outcome outcome = corvanectl({"screenshot", "/nowhere/box.png"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "corvanectl: cannot write /nowhere/box.png: No such file or directory\n");
}

TEST_F(ProcmandScreenshot, KeepsSixteenPicturesInTheRuntimeFolderEachForALittleWhile)
{
    startDrawing();
    const auto take = [this] { return call("IWindowCompositing::screenshot"); };
    for (int i = 0; i < 16; ++i)
        ASSERT_NE(announcements.take({"IWindowCompositing::onScreenshot ", take()}), "");
    EXPECT_EQ(countPictures(), 16);
    EXPECT_THAT(refusalOf("IWindowCompositing::screenshot"), HasSubstr("too many screenshots"));

    EXPECT_TRUE(await([&] {
        try {
            return !take().empty();
        } catch (const Corvane::RPCError&) {
            return false;
        }
    }));
    ASSERT_NE(announcements.take({"IWindowCompositing::onScreenshot "}), "");
    EXPECT_EQ(countPictures(), 16);
}

TEST_F(ProcmandScreenshot, RemovesThePicturesOfAProcessManagerThatWasKilled)
{
    startDrawing();
    takePicture();
    killProcmand();
    startDrawing();
    takePicture();

    EXPECT_EQ(countPictures(), 1);
}

TEST_F(ProcmandScreenshot, EndsSoonHoweverManyPicturesWereAskedFor)
{
    startWithTwoWindows();
    int accepted = 0;
    for (int i = 0; i < 1500; ++i) {
        try {
            call("IWindowCompositing::screenshot");
            ++accepted;
        } catch (const Corvane::RPCError&) {
        }
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(endProcmand(), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_LT(accepted, 750) << "sixteen in two seconds";
}

TEST_F(ProcmandScreenshot, EndsCleanlyWhileItDraws)
{
    startWithTwoWindows();
    takePicture();

    EXPECT_EQ(endProcmand(), 0);
}

TEST_F(ProcmandScreenshot, IsRefusedWhereWindowsAreKeptInMemory)
{
    startProcmand({"--compositor", "memory"});
    const Outcome outcome = corvanectl({"screenshot", fileName()});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.error, HasSubstr("the windows are kept in memory only"));
    EXPECT_FALSE(std::filesystem::exists(fileName()));
}

TEST_F(ProcmandScreenshot, TellsWhyDirectFBDoesNotStartAndTheBoxGoesOn)
{
    setenv("DFBARGS", "system=nosuch", 1);
    startDrawing();
    const std::string problem = "DirectFB does not start (corvane-procmand --check-directfb tells more)";
    const Outcome outcome = corvanectl({"screenshot", fileName()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "corvanectl: nothing is drawn: " + problem + "\n");

    left = launchWindow(LEFT);
    EXPECT_THAT(corvanectl({"windows"}).output, HasSubstr(left));
    EXPECT_EQ(endProcmand(), 0);
    EXPECT_THAT(procmand->getError(), HasSubstr("the windows are kept in memory only: " + problem + "\n"));
}

TEST_F(ProcmandScreenshot, IsPrecededByACheckForPeople)
{
    ChildProcess works({CORVANE_PROCMAND, "--check-directfb"});
    EXPECT_EQ(works.wait().status, 0);
    EXPECT_THAT(works.getOutput(), testing::EndsWith("DirectFB starts\n"));

    setenv("DFBARGS", "system=nosuch", 1);
    ChildProcess fails({CORVANE_PROCMAND, "--check-directfb"});
    EXPECT_EQ(fails.wait().status, 1) << "whether DirectFB dies of a fault or not";
    EXPECT_THAT(fails.getError(), HasSubstr("DirectFB/Core: Could not initialize"));
    EXPECT_THAT(fails.getError(), HasSubstr("\ncorvane-procmand: DirectFB"));
}

TEST_F(ProcmandScreenshot, IsDescribed)
{
    startDrawing();
    const std::string text = corvanectl({"describe", "ORU"}).output;

    for (const char* name : {"screenshot(", "onScreenshot(", "onScreenshotFailure("})
        EXPECT_THAT(text, HasSubstr(std::string("  IWindowCompositing::") + name));
    EXPECT_EQ(corvanectl({"screenshot"}).status, 2);
}
