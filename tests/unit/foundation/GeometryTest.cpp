#include "ProblemOf.h"
#include "RecordingDeserializer.h"
#include <climits>
#include <corvane/interfaces/ICursor.h>
#include <corvane/interfaces/ISurfaceCompositing.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace Corvane::Test
{

namespace
{

using Point = ISurfaceCompositing::Point;
using Dimensions = ISurfaceCompositing::Dimensions;
using Rect = ISurfaceCompositing::Rect;

void expectRect(const Rect& rect, int x, int y, unsigned int width, unsigned int height)
{
    EXPECT_EQ(rect.getX(), x);
    EXPECT_EQ(rect.getY(), y);
    EXPECT_EQ(rect.getWidth(), width);
    EXPECT_EQ(rect.getHeight(), height);
}

const char LOCATION[] = R"({"location":{"height":4,"width":3,"y":-2,"x":1},"x":99})";

} // namespace

TEST(Geometry, APointAddsByCoordinates)
{
    const Point sum = Point(10, -20) + Point(-3, 5);

    EXPECT_EQ(sum.getX(), 7);
    EXPECT_EQ(sum.getY(), -15);
}

TEST(Geometry, ASumOfPointsWrapsAt32Bits)
{
    const Point above = Point(INT_MAX, INT_MIN) + Point(1, -1);
    const Point twice = Point(INT_MIN, INT_MAX) + Point(INT_MIN, INT_MAX);

    EXPECT_EQ(above.getX(), INT_MIN);
    EXPECT_EQ(above.getY(), INT_MAX);
    EXPECT_EQ(twice.getX(), 0);
    EXPECT_EQ(twice.getY(), -2);
}

TEST(Geometry, ARectangleIsAPointAndASize)
{
    expectRect(Rect(-1, 2, 4294967295U, 4), -1, 2, 4294967295U, 4);
    expectRect(Rect(Point(5, 6), Dimensions(7, 8)), 5, 6, 7, 8);
    const Rect rect(1, 2, 3, 4);
    EXPECT_EQ(rect.getPoint().getX(), 1);
    EXPECT_EQ(rect.getPoint().getY(), 2);
    EXPECT_EQ(rect.getDimensions().getWidth(), 3U);
    EXPECT_EQ(rect.getDimensions().getHeight(), 4U);
    EXPECT_EQ(rect.getPoint().getObjectType(), "Point") << "a point of its own, not the rectangle";
    EXPECT_EQ(rect.getDimensions().getObjectType(), "Dimensions");
}

TEST(Geometry, CopiesAreEqual)
{
    const Rect original(-1, 2, 3, 4);
    const Rect copy(original);
    Rect assigned(0, 0, 0, 0);
    assigned = original;
    const Rect& self = assigned;
    assigned = self;

    expectRect(copy, -1, 2, 3, 4);
    expectRect(assigned, -1, 2, 3, 4);
    const Point point(original);
    Point assignedPoint(0, 0);
    assignedPoint = point;
    EXPECT_EQ(assignedPoint.getX(), -1);
    EXPECT_EQ(assignedPoint.getY(), 2);
    const Dimensions size(original);
    Dimensions assignedSize(0, 0);
    assignedSize = size;
    EXPECT_EQ(assignedSize.getWidth(), 3U);
    EXPECT_EQ(assignedSize.getHeight(), 4U);
}

TEST(Geometry, SharesOneSerialObjectInARectangle)
{
    static_assert(std::is_convertible_v<Rect*, SerialObject*>, "two bases of that type would be ambiguous");
    const Rect rect(1, 2, 3, 4);

    EXPECT_EQ(static_cast<const SerialObject*>(static_cast<const Point*>(&rect)),
              static_cast<const SerialObject*>(static_cast<const Dimensions*>(&rect)));
}

TEST(Geometry, IsWrittenByItsMembers)
{
    const Rect rect(-1, 2, 3, 4);
    const char text[] = R"({"x":-1,"y":2,"width":3,"height":4})";

    EXPECT_EQ(Point(-1, 2).serialize(), R"({"x":-1,"y":2})");
    EXPECT_EQ(Dimensions(3, 4).serialize(), R"({"width":3,"height":4})");
    EXPECT_EQ(rect.serialize(), text);
    EXPECT_EQ(static_cast<const Point&>(rect).serialize(), text);
    EXPECT_EQ(static_cast<const Dimensions&>(rect).serialize(), text);
    EXPECT_EQ(rect.clone()->serialize(), text);
    EXPECT_EQ(rect.getObjectType(), "Rect");
    EXPECT_EQ(Point(-1, 2).clone()->serialize(), R"({"x":-1,"y":2})");
    EXPECT_EQ(Dimensions(3, 4).clone()->serialize(), R"({"width":3,"height":4})");
}

TEST(Geometry, IsReadByItsMembers)
{
    Deserializer deserializer(R"({"x":-1,"y":2,"width":4294967295,"height":0})");

    expectRect(Rect(deserializer), -1, 2, 4294967295U, 0);
    EXPECT_EQ(Point(deserializer).getY(), 2);
    EXPECT_EQ(Dimensions(deserializer).getWidth(), 4294967295U);
}

TEST(Geometry, EntersReadsAndLeavesTheMemberOfARectangle)
{
    RecordingDeserializer deserializer(LOCATION);

    expectRect(deserialize<Rect>("location", deserializer), 1, -2, 3, 4);
    EXPECT_EQ(deserializer.calls, (std::vector<std::string>{"enter location", "leave location"}));
    EXPECT_EQ(deserialize<int>("x", deserializer), 99);
}

TEST(Geometry, PassesOnWhatLeavingTheMemberThrows)
{
    RecordingDeserializer deserializer(LOCATION);
    deserializer.failsToLeave = true;

    EXPECT_THROW(deserialize<Rect>("location", deserializer), std::runtime_error);
}

TEST(Geometry, RefusesWhatIsNoRectangle)
{
    const auto problemOfRect = [](const std::string& value) {
        Deserializer deserializer("{\"location\":" + value + "}");
        return problemOf([&] { deserialize<Rect>("location", deserializer); });
    };
    EXPECT_EQ(problemOfRect(R"({"x":1,"y":2,"width":-3,"height":4})"),
              "location.width: expected an unsigned 32-bit number, found -3");
    EXPECT_EQ(problemOfRect(R"({"x":2147483648,"y":2,"width":3,"height":4})"),
              "location.x: expected a signed 32-bit number, found 2147483648");
    EXPECT_EQ(problemOfRect(R"({"y":2,"width":3,"height":4})"), "location.x: missing");
    EXPECT_EQ(problemOfRect("null"), "location: expected an object, found null");
}

TEST(Geometry, ANewCursorsStateIsTwo)
{
    static_assert(sizeof(ICursor::CursorState) == 4);
    EXPECT_EQ(static_cast<unsigned int>(ICursor::CURSOR_STATE_NORMAL), 2U);
}

} // namespace Corvane::Test
