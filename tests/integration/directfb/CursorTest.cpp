#include "CursorFile.h"
#include "Screen.h"
#include <algorithm>
#include <corvane/DFBCursor.h>
#include <corvane/foundation/Exception.h>
#include <cstdlib>
#include <gtest/gtest.h>
#include <support/Await.h>
#include <support/CapturedOutput.h>
#include <support/TemporaryDirectory.h>

namespace Corvane::Test
{

namespace
{

constexpr unsigned int SESSION = 0;
constexpr int HOT_SPOT = 3;

/// Eight pixels wide and ten high, each row and column of another colour, so that a pixel in the wrong place shows.
Picture colours()
{
    Picture picture{8, 10, {}};
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            picture.pixels.push_back(0xFF000080U | static_cast<std::uint32_t>(x * 30) << 16 |
                                     static_cast<std::uint32_t>(y * 25) << 8);
    return picture;
}

bool areNear(std::uint32_t one, std::uint32_t other, int tolerance)
{
    for (int shift = 0; shift < 24; shift += 8) {
        const int difference = static_cast<int>(one >> shift & 0xFF) - static_cast<int>(other >> shift & 0xFF);
        if (std::abs(difference) > tolerance)
            return false;
    }
    return true;
}

/// One pixel above another, by the opacity of the upper one and of the pointer, 0 to 255 each.
std::uint32_t blend(std::uint32_t upper, std::uint32_t lower, unsigned int opacity)
{
    const std::uint32_t alpha = (upper >> 24) * opacity / 255;
    std::uint32_t result = 0xFF000000U;
    for (int shift = 0; shift < 24; shift += 8) {
        const std::uint32_t sum = (upper >> shift & 0xFF) * alpha + (lower >> shift & 0xFF) * (255 - alpha);
        result |= sum / 255 << shift;
    }
    return result;
}

/// The screen with the picture's hot spot at a point.
Picture screenWith(const Picture& pointer, int atX, int atY, unsigned int opacity)
{
    Picture screen{Screen::WIDTH, Screen::HEIGHT, {}};
    screen.pixels.assign(std::size_t{Screen::WIDTH} * Screen::HEIGHT, Screen::BACKGROUND);
    for (int y = 0; y < pointer.height; ++y)
        for (int x = 0; x < pointer.width; ++x) {
            const int column = atX - HOT_SPOT + x;
            const int row = atY - HOT_SPOT + y;
            if (column >= 0 && column < Screen::WIDTH && row >= 0 && row < Screen::HEIGHT)
                screen.pixels[static_cast<std::size_t>(row * Screen::WIDTH + column)] =
                    blend(pointer.at(x, y), Screen::BACKGROUND, opacity);
        }
    return screen;
}

/// The layer must come to show this picture, pixel by pixel. @param tolerance  of each colour, for roundings
void expectScreen(const Picture& expected, int tolerance)
{
    Picture shown;
    const auto isShown = [&] {
        shown = Screen::read();
        return std::ranges::equal(shown.pixels, expected.pixels,
                                  [&](auto one, auto other) { return areNear(one, other, tolerance); });
    };
    if (await(isShown, std::chrono::seconds(5)))
        return;
    for (int y = 0; y < expected.height; ++y)
        for (int x = 0; x < expected.width; ++x)
            if (!areNear(shown.at(x, y), expected.at(x, y), tolerance)) {
                FAIL() << "at " << x << "," << y << " there is " << std::hex << shown.at(x, y) << " and not "
                       << expected.at(x, y);
                return;
            }
}

class DirectFBCursor : public ::testing::Test
{
protected:
    /// Makes a pointer with the picture and moves it.
    void show(const Picture& pointer, int x, int y)
    {
        writePicture(path, pointer);
        cursor.init();
        cursor.setLocation(SESSION, {x, y, 0, 0});
    }

    /// init() must fail for a file with these bytes, and say so under the line of the step that minds it.
    void expectRefused(const std::string& content, int line)
    {
        writeBytes(path, content);
        expectRefused(line);
    }

    void expectRefused(int line)
    {
        const CapturedOutput output;
        try {
            cursor.init();
            ADD_FAILURE() << "a pointer without a picture";
        } catch (const Exception& exception) {
            EXPECT_EQ(static_cast<int>(exception.getCode()), 7);
        }
        const std::vector<DebugLine> lines = output.getDebugLines();
        ASSERT_EQ(lines.size(), 1U) << output.getText();
        EXPECT_EQ(lines[0].line, line);
        EXPECT_EQ(lines[0].message, "init: IDirectFBDisplayLayer::SetCursorShape failed!");
    }

    const TemporaryDirectory directory;
    const std::string path = directory.getPath() + "/cursor.png";
    const CursorFile file{path};
    DFBCursor cursor{Screen::dfb(), Screen::layer(), true};
};

/// The bytes of a good file.
std::string wholeFile(const std::string& path)
{
    writePicture(path, colours());
    return readBytes(path);
}

} // namespace

TEST_F(DirectFBCursor, ShowsThePictureWithItsHotSpotWhereItWasWarped)
{
    show(colours(), 100, 50);
    expectScreen(screenWith(colours(), 100, 50, 255), 0);
    EXPECT_EQ(file.getOpened(), 1);
}

TEST_F(DirectFBCursor, MovesAndLeavesNothingBehind)
{
    show(colours(), 100, 50);
    cursor.setLocation(SESSION, {104, 53, 0, 0});
    expectScreen(screenWith(colours(), 104, 53, 255), 0);
    cursor.setLocation(SESSION, {400, 300, 0, 0});
    expectScreen(screenWith(colours(), 400, 300, 255), 0);
}

TEST_F(DirectFBCursor, ShowsThePointerOfTheProduct)
{
    const Picture product = readPicture(CORVANE_CURSOR_PICTURE);
    ASSERT_EQ(product.at(HOT_SPOT, HOT_SPOT) >> 24, 255U) << "the tip of the arrow is no hole";
    show(product, 200, 200);
    expectScreen(screenWith(product, 200, 200, 255), 2);
}

TEST_F(DirectFBCursor, IsHalfThereAtOpacity128)
{
    show(colours(), 100, 50);
    cursor.setOpacity(SESSION, 128);
    expectScreen(screenWith(colours(), 100, 50, 128), 2);
}

TEST_F(DirectFBCursor, IsGoneAtOpacityZeroAndComesBack)
{
    show(colours(), 100, 50);
    expectScreen(screenWith(colours(), 100, 50, 255), 0);
    cursor.setOpacity(SESSION, 0);
    expectScreen(screenWith({}, 0, 0, 0), 0);
    cursor.setOpacity(SESSION, 255);
    expectScreen(screenWith(colours(), 100, 50, 255), 0);
}

TEST_F(DirectFBCursor, ShowsTheLowBitsOfAGreaterOpacity)
{
    show(colours(), 100, 50);
    cursor.setOpacity(SESSION, 256 + 128);
    expectScreen(screenWith(colours(), 100, 50, 128), 2);
    cursor.setOpacity(SESSION, 256);
    expectScreen(screenWith({}, 0, 0, 0), 0);
}

TEST_F(DirectFBCursor, IsGoneWhenItIsHiddenAndComesBackAsItWas)
{
    show(colours(), 100, 50);
    cursor.setOpacity(SESSION, 128);
    cursor.setVisibility(SESSION, false);
    expectScreen(screenWith({}, 0, 0, 0), 0);
    cursor.setVisibility(SESSION, true);
    expectScreen(screenWith(colours(), 100, 50, 128), 2);
}

TEST_F(DirectFBCursor, ShowsNothingWhenItIsMadeHidden)
{
    writePicture(path, colours());
    DFBCursor hidden(Screen::dfb(), Screen::layer(), false);
    hidden.init();
    hidden.setLocation(SESSION, {100, 50, 0, 0});
    expectScreen(screenWith({}, 0, 0, 0), 0);
    hidden.setVisibility(SESSION, true);
    expectScreen(screenWith(colours(), 100, 50, 255), 0);
}

TEST_F(DirectFBCursor, TellsWhereItIsAndHowLargeItsPictureIs)
{
    show(colours(), 100, 50);
    EXPECT_EQ(cursor.getLocation(SESSION).serialize(), R"({"x":100,"y":50,"width":8,"height":10})");
}

TEST_F(DirectFBCursor, StaysOnTheLayer)
{
    show(colours(), -5, 99999);
    EXPECT_EQ(cursor.getLocation(SESSION).serialize(), R"({"x":0,"y":479,"width":8,"height":10})");
    expectScreen(screenWith(colours(), 0, 479, 255), 0);
}

TEST_F(DirectFBCursor, RefusesToStartWithoutAFileAndStartsOnceItIsThere)
{
    expectRefused(68);
    show(colours(), 100, 50);
    expectScreen(screenWith(colours(), 100, 50, 255), 0);
}

TEST_F(DirectFBCursor, RefusesAnEmptyFile)
{
    expectRefused("", 68);
}

TEST_F(DirectFBCursor, RefusesAFileThatIsNoPicture)
{
    expectRefused("This is no picture.\n", 68);
}

TEST_F(DirectFBCursor, RefusesATruncatedPicture)
{
    expectRefused(wholeFile(path).substr(0, 60), 85);
}

TEST_F(DirectFBCursor, RefusesAPictureWithAWrongChecksum)
{
    std::string bytes = wholeFile(path);
    bytes[bytes.find("IDAT") + 10] ^= 0x55;
    expectRefused(bytes, 85);
}

TEST_F(DirectFBCursor, RefusesAPictureSmallerThanItsHotSpot)
{
    writePicture(path, {2, 2, std::vector<std::uint32_t>(4, 0xFFFF0000U)});
    expectRefused(95);
}

} // namespace Corvane::Test
