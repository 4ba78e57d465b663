#include "box/ManagedApplication.h"

#include <gtest/gtest.h>

using namespace Procmand;

namespace
{

std::string describe(const std::string& name, const std::string& type, const std::string& program)
{
    ManagedApplication application;
    application.request.emplace().name = name;
    application.type = type;
    application.program = program;
    return application.describe();
}

} // namespace

TEST(Registry, DescribesAnApplicationByNameTypeAndProgramAsFarAsTheyAreKnown)
{
    EXPECT_EQ(describe("kitchen", "player", "/usr/bin/box-window"), "kitchen, player, box-window");
    EXPECT_EQ(describe("", "player", "box-window"), "player, box-window");
    EXPECT_EQ(describe("kitchen", "", ""), "kitchen");
    EXPECT_EQ(describe("", "", ""), "");
}
