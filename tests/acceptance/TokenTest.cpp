#include "VolumeProcess.h"

#include <gmock/gmock.h>

using namespace Corvane::Test;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{

using CorvanectlToken = WithVolumeService;

const char* const GRANT = R"({"volume":{"change":1}})";

} // namespace

TEST_F(CorvanectlToken, IsCreatedFromAFileAndDeleted)
{
    EXPECT_FALSE(permits("42"));

    const Outcome creation =
        corvanectl({"token", "create", "volume", "42", write("{\n  \"volume\": {\"change\": 1}\n}\n")});
    EXPECT_EQ(creation.status, 0) << creation.error;
    EXPECT_EQ(creation.output, "");
    EXPECT_TRUE(permits("42"));
    EXPECT_FALSE(permits("43"));

    const Outcome deletion = corvanectl({"token", "delete", "volume", "42"});
    EXPECT_EQ(deletion.status, 0) << deletion.error;
    EXPECT_EQ(deletion.output, "");
    EXPECT_FALSE(permits("42"));
}

TEST_F(CorvanectlToken, GivesAScriptNull)
{
    EXPECT_EQ(corvanectl({"--json", "token", "create", "volume", "42", write(GRANT)}).output, "null\n");
    EXPECT_EQ(corvanectl({"token", "delete", "volume", "42", "--json"}).output, "null\n");
}

TEST_F(CorvanectlToken, TakesTheAttributesFromTheStandardInput)
{
    const std::string command =
        std::string("printf '{\"volume\":{\"change\":1}}' | " CORVANECTL " token create volume 4294967295 -");
    ChildProcess shell({"/bin/sh", "-c", command});

    EXPECT_EQ(shell.wait().status, 0) << shell.getError();
    EXPECT_TRUE(permits("4294967295"));
}

TEST_F(CorvanectlToken, SaysWhatIsWrongWithTheStandardInput)
{
    ChildProcess shell({"/bin/sh", "-c", "printf '{' | " CORVANECTL " token create volume 1 -"});

    EXPECT_EQ(shell.wait().status, 2);
    EXPECT_THAT(shell.getError(), StartsWith("corvanectl: the standard input holds no attributes: "));
}

TEST_F(CorvanectlToken, OfAnEmptyObjectPermitsNothing)
{
    EXPECT_EQ(corvanectl({"token", "create", "volume", "42", write("{}")}).status, 0);

    EXPECT_FALSE(permits("42"));
}

TEST_F(CorvanectlToken, ReplacesTheAttributesOfATokenThatIsThere)
{
    corvanectl({"token", "create", "volume", "42", write(GRANT)});
    EXPECT_TRUE(permits("42"));

    EXPECT_EQ(corvanectl({"token", "create", "volume", "42", write(R"({"volume":{"change":0}})")}).status, 0);

    EXPECT_FALSE(permits("42"));
}

TEST_F(CorvanectlToken, ThatWasNeverCreatedIsDeletedWithoutAnError)
{
    EXPECT_EQ(corvanectl({"token", "delete", "volume", "77"}).status, 0);
}

TEST_F(CorvanectlToken, IsRefusedByTheServiceWithItsReason)
{
    std::string attributes;
    for (int i = 0; i < 65; ++i)
        attributes += (i == 0 ? "{\"n" : ",\"n") + std::to_string(i) + "\":{}";

    const Outcome outcome = corvanectl({"token", "create", "volume", "42", write(attributes + "}")});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "corvanectl: token 42 has 65 names, at most 64 are kept\n");
}

TEST_F(CorvanectlToken, IsNotSentWithAFileThatHoldsNoAttributes)
{
    const std::vector<std::pair<std::string, std::string>> wrong = {
        {"", ""},
        {"[]", "expected an object, found array"},
        {"{\"volume\":1}", "volume: expected an object, found 1"},
        {"{\"volume\":{\"change\":\"yes\"}}", "volume.change: expected a signed 32-bit number, found string"},
        {"{\"volume\":{\"change\":2147483648}}", "volume.change: expected a signed 32-bit number, found 2147483648"},
        {"{\"volume\":{\"change\":1}} more", ""},
        {"{\"\xFF\":{}}", ""}};
    for (const auto& [text, problem] : wrong) {
        const std::string file = write(text);
        const Outcome outcome = corvanectl({"token", "create", "volume", "42", file});
        EXPECT_EQ(outcome.status, 2) << text;
        EXPECT_THAT(outcome.error, StartsWith("corvanectl: " + file + " holds no attributes: ")) << text;
        EXPECT_THAT(outcome.error, HasSubstr(problem)) << text;
    }

    EXPECT_FALSE(permits("42"));
}

TEST_F(CorvanectlToken, IsNotSentWithAFileThatCannotBeRead)
{
    const std::string missing = folder.getPath() + "/missing";
    const Outcome outcome = corvanectl({"token", "create", "volume", "42", missing});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.error, "corvanectl: " + missing + " cannot be read: No such file or directory\n");

    const Outcome directory = corvanectl({"token", "create", "volume", "42", folder.getPath()});
    EXPECT_EQ(directory.status, 2);
    EXPECT_EQ(directory.error, "corvanectl: " + folder.getPath() + " cannot be read: Is a directory\n");
}

TEST_F(CorvanectlToken, IsNotSentWithAFileThatHasNoEnd)
{
    const Outcome outcome = corvanectl({"token", "create", "volume", "42", "/dev/zero"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.error, "corvanectl: /dev/zero is longer than the 1 MiB that a message may have\n");
}

TEST_F(CorvanectlToken, IsNotSentWhenTheWordsAreWrong)
{
    const std::string file = write(GRANT);
    const std::vector<Words> wrong = {{"token"},
                                      {"token", "volume"},
                                      {"token", "create"},
                                      {"token", "create", "volume"},
                                      {"token", "create", "volume", "42"},
                                      {"token", "create", "volume", "-1", file},
                                      {"token", "create", "volume", "4294967296", file},
                                      {"token", "create", "volume", "0x2a", file},
                                      {"token", "create", "volume", "", file},
                                      {"token", "create", "", "42", file},
                                      {"token", "create", "volume", "42", file, "more"},
                                      {"token", "delete", "volume"},
                                      {"token", "delete", "volume", "all"},
                                      {"token", "delete", "volume", "42", file}};
    for (const Words& words : wrong) {
        const Outcome outcome = corvanectl(words);
        EXPECT_EQ(outcome.status, 2) << testing::PrintToString(words);
        EXPECT_EQ(outcome.output, "") << testing::PrintToString(words);
        EXPECT_THAT(outcome.error, StartsWith("corvanectl: ")) << testing::PrintToString(words);
    }

    EXPECT_FALSE(permits("42"));
}

TEST_F(CorvanectlToken, ForAWindowIsAnUnknownInterface)
{
    HelloWindow hello;

    const Outcome outcome = corvanectl({"token", "delete", "demo", "42"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "corvanectl: unknown interface\n");
}

TEST_F(CorvanectlToken, ForNobodySaysThatThereIsNoSuchServer)
{
    for (const Words& words :
         {Words{"token", "create", "nobody", "42", write(GRANT)}, Words{"token", "delete", "nobody", "42"}}) {
        const Outcome outcome = corvanectl(words);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.error, StartsWith("corvanectl: no server APPnobody "));
    }
}

TEST_F(CorvanectlToken, IsExplainedWithExamples)
{
    EXPECT_THAT(corvanectl({"--help"}).output, HasSubstr("\n  token "));
    const std::string group = corvanectl({"token", "--help"}).output;
    EXPECT_THAT(group, HasSubstr("\n  create "));
    EXPECT_THAT(group, HasSubstr("\n  delete "));
    EXPECT_THAT(group, HasSubstr("Example:\n  corvanectl token create volume 42 attributes.json\n"));
    EXPECT_THAT(corvanectl({"token", "create", "--help"}).output,
                HasSubstr("Example:\n  corvanectl token create volume 42 attributes.json"));
    EXPECT_THAT(corvanectl({"token", "delete", "--help"}).output,
                HasSubstr("Example:\n  corvanectl token delete volume 42\n"));
}
