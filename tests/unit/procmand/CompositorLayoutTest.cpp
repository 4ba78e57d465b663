#include "screen/CompositorLayout.h"

#include <gtest/gtest.h>
#include <limits>
#include <set>

using namespace Procmand;

namespace
{

WindowState makeWindow(unsigned int index, const WindowStack::Rect& location)
{
    return {.index = index, .uid = "uid" + std::to_string(index), .location = location};
}

std::vector<ShownWindow> layOutAlone(const WindowState& window)
{
    return layOut({.windows = {window}, .focused = ""}, 640, 480);
}

} // namespace

TEST(CompositorLayout, KeepsTheOrderOfTheStack)
{
    const auto shown =
        layOut({.windows = {makeWindow(7, {0, 0, 10, 10}), makeWindow(3, {5, 5, 10, 10})}, .focused = ""}, 640, 480);

    ASSERT_EQ(shown.size(), 2U);
    EXPECT_EQ(shown[0].index, 7U);
    EXPECT_EQ(shown[1].index, 3U);
}

TEST(CompositorLayout, ShowsAWindowWithinTheScreenWhole)
{
    const auto shown = layOutAlone(makeWindow(1, {10, 20, 300, 200}));

    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown[0].part, (Area{10, 20, 300, 200}));
    EXPECT_EQ(shown[0].whole, (Area{0, 0, 300, 200}));
    EXPECT_EQ(shown[0].uid, "uid1");
}

TEST(CompositorLayout, LabelsAWindowWithWhatEveryFontHas)
{
    WindowState window = makeWindow(1, {0, 0, 10, 10});
    window.label = "t\xC3\xBCr ~\x1b[2J\x7f\xF0\x9F\x93\xBA.";

    EXPECT_EQ(layOutAlone(window).at(0).label, "t?r ~?[2J??.");
}

TEST(CompositorLayout, CutsOffWhatReachesBeyondTheScreen)
{
    const auto upperLeft = layOutAlone(makeWindow(1, {-30, -5, 100, 50}));
    ASSERT_EQ(upperLeft.size(), 1U);
    EXPECT_EQ(upperLeft[0].part, (Area{0, 0, 70, 45}));
    EXPECT_EQ(upperLeft[0].whole, (Area{-30, -5, 100, 50}));

    const auto lowerRight = layOutAlone(makeWindow(1, {600, 470, 100, 50}));
    ASSERT_EQ(lowerRight.size(), 1U);
    EXPECT_EQ(lowerRight[0].part, (Area{600, 470, 40, 10}));
    EXPECT_EQ(lowerRight[0].whole, (Area{0, 0, 100, 50}));
}

TEST(CompositorLayout, LeavesOutWhatIsNotToBeSeen)
{
    WindowState hidden = makeWindow(1, {0, 0, 10, 10});
    hidden.visibility = false;
    EXPECT_TRUE(layOutAlone(hidden).empty());

    WindowState transparent = makeWindow(1, {0, 0, 10, 10});
    transparent.opacity = 0;
    EXPECT_TRUE(layOutAlone(transparent).empty());

    EXPECT_TRUE(layOutAlone(makeWindow(1, {640, 0, 10, 10})).empty());
    EXPECT_TRUE(layOutAlone(makeWindow(1, {0, -10, 10, 10})).empty());
}

TEST(CompositorLayout, BearsAWindowOfAnySize)
{
    constexpr int LOWEST = std::numeric_limits<int>::min();
    constexpr unsigned int HIGHEST = std::numeric_limits<unsigned int>::max();
    const auto shown = layOutAlone(makeWindow(1, {LOWEST, LOWEST, HIGHEST, HIGHEST}));

    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown[0].part, (Area{0, 0, 640, 480}));
    EXPECT_TRUE(layOutAlone(makeWindow(1, {std::numeric_limits<int>::max(), 0, HIGHEST, 1})).empty());
}

TEST(CompositorLayout, GivesTheFocusToTheWindowsOfOneApplication)
{
    const auto shown =
        layOut({.windows = {makeWindow(1, {0, 0, 9, 9}), makeWindow(2, {0, 0, 9, 9})}, .focused = "uid2"}, 640, 480);

    ASSERT_EQ(shown.size(), 2U);
    EXPECT_FALSE(shown[0].hasFocus);
    EXPECT_TRUE(shown[1].hasFocus);
}

TEST(CompositorLayout, TellsApplicationsApartByColoursThatWhiteTextCanBeReadOn)
{
    std::set<int> colours;
    for (int i = 0; i < 100; ++i) {
        const Colour colour = colourOf("uid" + std::to_string(i));
        EXPECT_EQ(colour, colourOf("uid" + std::to_string(i)));
        for (const int shade : {colour.red, colour.green, colour.blue}) {
            EXPECT_GE(shade, 0x30);
            EXPECT_LT(shade, 0xB0);
        }
        colours.insert(colour.red << 16 | colour.green << 8 | colour.blue);
    }
    EXPECT_GT(colours.size(), 95U);
}
