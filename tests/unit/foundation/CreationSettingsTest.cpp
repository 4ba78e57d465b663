#include "ProblemOf.h"
#include <corvane/interfaces/ISurfaceManagement.h>
#include <gtest/gtest.h>
#include <string>

namespace Corvane::Test
{

namespace
{

using Settings = ISurfaceManagement::CreationSettings;
using Rect = ISurfaceCompositing::Rect;

const Settings EXAMPLE(3, Rect(-1, 2, 640, 480), 7, 300, false);
const char EXAMPLE_TEXT[] = R"({"sessionIndex":3,"location":{"x":-1,"y":2,"width":640,"height":480},"zOrder":7,)"
                            R"("opacity":300,"visibility":false})";

Settings read(const std::string& text)
{
    Deserializer deserializer(text);
    return Settings(deserializer);
}

void expectExample(const Settings& settings)
{
    EXPECT_EQ(settings.getSessionIndex(), 3U);
    EXPECT_EQ(settings.getLocation().serialize(), Rect(-1, 2, 640, 480).serialize());
    EXPECT_EQ(settings.getZOrder(), 7U);
    EXPECT_EQ(settings.getOpacity(), 300U);
    EXPECT_FALSE(settings.getVisibility());
}

} // namespace

TEST(CreationSettings, StartWithAVisibleOpaqueScreenOfSessionZero)
{
    const Settings settings;

    EXPECT_EQ(settings.serialize(), R"({"sessionIndex":0,"location":{"x":0,"y":0,"width":1280,"height":720},)"
                                    R"("zOrder":0,"opacity":255,"visibility":true})");
}

TEST(CreationSettings, KeepWhatTheyAreGiven)
{
    expectExample(EXAMPLE);
}

TEST(CreationSettings, CopiesAreEqual)
{
    const Settings copy(EXAMPLE);
    Settings assigned;
    assigned = EXAMPLE;

    expectExample(copy);
    expectExample(assigned);
    EXPECT_EQ(EXAMPLE.clone()->serialize(), EXAMPLE_TEXT);
}

TEST(CreationSettings, ComeBackAsTheyWereWritten)
{
    EXPECT_EQ(EXAMPLE.serialize(), EXAMPLE_TEXT);
    expectExample(read(EXAMPLE_TEXT));
    EXPECT_EQ(EXAMPLE.getObjectType(), "CreationSettings");
}

TEST(CreationSettings, KeepTheDefaultOfAMemberThatIsAbsent)
{
    EXPECT_EQ(read("{}").serialize(), Settings().serialize());
    const Settings settings = read(R"({"zOrder":4294967295,"unknown":[]})");
    EXPECT_EQ(settings.getZOrder(), 4294967295U);
    EXPECT_EQ(settings.getOpacity(), 255U);
    EXPECT_TRUE(settings.getVisibility());
}

TEST(CreationSettings, RefuseAMemberThatIsWrong)
{
    EXPECT_EQ(problemOf([] { read(R"({"opacity":"full"})"); }),
              "opacity: expected an unsigned 32-bit number, found string");
    EXPECT_EQ(problemOf([] { read(R"({"visibility":null})"); }), "visibility: expected true or false, found null");
    EXPECT_EQ(problemOf([] { read(R"({"sessionIndex":-1})"); }),
              "sessionIndex: expected an unsigned 32-bit number, found -1");
    EXPECT_EQ(problemOf([] { read(R"({"location":{"x":1,"y":2,"width":3}})"); }), "location.height: missing");
    EXPECT_EQ(problemOf([] { read("[]"); }), "expected an object, found array");
}

} // namespace Corvane::Test
