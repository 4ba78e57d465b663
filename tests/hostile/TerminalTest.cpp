#include "HostileServer.h"
#include "Programs.h"

#include <gmock/gmock.h>

using namespace Corvane::Test;
using testing::HasSubstr;
using testing::Not;

namespace
{

/// What would set a title, clear the screen (by C0 and by C1) and write the other way round, as JSON and as it is.
constexpr char EVIL[] = R"(\u001b]0;x\u0007\u009b2J\u007f\u202eabc\u2066\u200f\u061c\u2028)";
constexpr const char* const COMMANDS[] = {"\x1b",         "\x07",         "\x7f",     "\xc2\x9b",    "\xe2\x80\xae",
                                          "\xe2\x81\xa6", "\xe2\x80\x8f", "\xd8\x9c", "\xe2\x80\xa8"};

std::string resultOf(const std::string& id, const std::string& result)
{
    return R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":)" + result + "}";
}

std::string errorOf(const std::string& id)
{
    return R"({"jsonrpc":"2.0","id":)" + id + R"(,"error":{"code":-32000,"message":")" + EVIL + "\"}}";
}

std::string noticeOf(const std::string& name, const std::string& parameters)
{
    return R"({"jsonrpc":"2.0","method":")" + name + R"(","params":)" + parameters + "}";
}

const std::string TEXT = std::string("\"") + EVIL + "\"";

/// An object with every member that a command shows, an evil text each.
std::string evilObject()
{
    std::string object = R"({"uid":)" + TEXT + R"(,"location":{"x":0,"y":0,"width":1,"height":1})";
    for (const char* const key : {"name",          "program",        "applicationType", "state",  "phase",   "pid",
                                  "time",          "restarts",       "restartsInRow",   "zOrder", "index",   "opacity",
                                  "previousState", "standardOutput", "standardError",   "method", "subject", "problem",
                                  "outcome",       "user",           "summary",         EVIL})
        object += std::string(",\"") + key + "\":" + TEXT;
    return object + "}";
}

void expectPrintable(const Words& command)
{
    const Outcome outcome = corvanectl(command);
    EXPECT_NE(outcome.status, -1) << command.front() << " has died";
    for (const char* const text : COMMANDS)
        EXPECT_THAT(outcome.output + outcome.error, Not(HasSubstr(text))) << command.front();
    EXPECT_THAT(outcome.output + outcome.error, HasSubstr("abc")) << command.front();
}

/// What a server says reaches the terminal of whoever uses corvanectl.
class Terminal : public testing::Test
{
protected:
    TemporaryRuntime runtime;
};

} // namespace

TEST_F(Terminal, IsNotDrivenByAnError)
{
    HostileServer application("APPevil", [](const std::string& id, const std::string&) { return errorOf(id); });
    for (const Words& command : std::vector<Words>{{"state", "evil"},
                                                   {"stats", "evil"},
                                                   {"focus", "evil", "on"},
                                                   {"call", "evil", "I::f"},
                                                   {"describe", "evil"},
                                                   {"list"},
                                                   {"list", "--json"}})
        expectPrintable(command);
    HostileServer manager("ORU", [](const std::string& id, const std::string& method) {
        return method == "rpc.subscribe" ? resultOf(id, "null") : errorOf(id);
    });
    for (const Words& command : std::vector<Words>{{"focus", "evil", "on"},
                                                   {"launch", "program"},
                                                   {"stop", "evil"},
                                                   {"restart", "evil"},
                                                   {"ps"},
                                                   {"history"},
                                                   {"audit"},
                                                   {"windows"},
                                                   {"screenshot", "/dev/null"}})
        expectPrintable(command);
}

TEST_F(Terminal, IsNotDrivenByAnAnswer)
{
    HostileServer application("APPevil", [](const std::string& id, const std::string& method) {
        return resultOf(id, method == "rpc.discover"
                                ? R"({"methods":[{"name":)" + TEXT + R"(,"summary":)" + TEXT +
                                      R"(,"params":[{"name":)" + TEXT + R"(,"schema":{"type":)" + TEXT + "}}]}]}"
                                : evilObject());
    });
    HostileServer manager("ORU", [](const std::string& id, const std::string& method) {
        return resultOf(id, method == "IApplicationManager::launch" ? TEXT : "[" + evilObject() + "]");
    });
    for (const Words& command : std::vector<Words>{{"state", "evil"},
                                                   {"z-order", "evil"},
                                                   {"call", "evil", "I::f"},
                                                   {"describe", "evil"},
                                                   {"launch", "--wait", "0", "program"},
                                                   {"ps"},
                                                   {"history"},
                                                   {"audit"},
                                                   {"windows"}}) {
        expectPrintable(command);
        Words forScripts = command;
        forScripts.insert(forScripts.begin(), "--json");
        expectPrintable(forScripts);
    }
}

TEST_F(Terminal, IsNotDrivenByWhatCameOfARequest)
{
    HostileServer application("APPevil", [](const std::string& id, const std::string&) { return errorOf(id); });
    HostileServer manager("ORU", [](const std::string& id, const std::string& method) {
        if (method == "rpc.subscribe")
            return resultOf(id, "null") + "\n" +
                   noticeOf("IWindowCompositing::onFocusFailure", R"({"uid":"evil","reason":)" + TEXT + "}") + "\n" +
                   noticeOf("IApplicationManager::onLaunchFailure", R"({"uid":"new","reason":)" + TEXT + "}") + "\n" +
                   noticeOf("IApplicationManager::onStop", R"({"uid":"evil","means":)" + TEXT + "}");
        return resultOf(id, method == "IApplicationManager::launch" ? "\"new\"" : "null");
    });
    expectPrintable({"focus", "evil", "on"});
    expectPrintable({"launch", "program"});
    expectPrintable({"--json", "stop", "evil"});
}

TEST_F(Terminal, KeepsTheMeaningOfJsonForScripts)
{
    HostileServer application("APPevil", [](const std::string& id, const std::string&) { return resultOf(id, TEXT); });
    EXPECT_EQ(corvanectl({"--json", "state", "evil"}).output,
              std::string("\"\\u001b]0;x\\u0007\\u009b2J\\u007f\\u202eabc\\u2066\\u200f\\u061c\\u2028\"\n"));
    EXPECT_EQ(
        corvanectl({"state", "evil"}).output,
        "\\x1b]0;x\\x07\\xc2\\x9b2J\\x7f\\xe2\\x80\\xaeabc\\xe2\\x81\\xa6\\xe2\\x80\\x8f\\xd8\\x9c\\xe2\\x80\\xa8\n");
}

TEST_F(Terminal, IsNotDrivenByTheNameOfASocket)
{
    const auto answer = [](const std::string& id, const std::string&) { return errorOf(id); };
    HostileServer broken("APPx\x9b"
                         "2J\xe2\x80\xae",
                         answer);
    expectPrintable({"list"});
    EXPECT_THAT(corvanectl({"list"}).output, HasSubstr("x\\x9b2J\\xe2\\x80\\xae"));
}

TEST_F(Terminal, ShowsTheMonitorAlsoOfNotificationsWithoutParameters)
{
    HostileServer application("APPevil", [](const std::string& id, const std::string&) {
        return resultOf(id, "null") + "\n" + R"({"jsonrpc":"2.0","method":"I::onNothing"})" + "\n" +
               noticeOf("I::onNull", "null") + "\n" + noticeOf("I::onList", "[" + TEXT + "]") + "\n" +
               noticeOf(EVIL, evilObject());
    });
    expectPrintable({"monitor", "--count", "4", "evil"});
    expectPrintable({"--json", "monitor", "--count", "4", "evil"});
    EXPECT_THAT(corvanectl({"--json", "monitor", "--count", "1", "evil"}).output,
                HasSubstr(R"("notification":"I::onNothing","params":{}})"));
    EXPECT_THAT(corvanectl({"monitor", "--count", "3", "evil"}).output, HasSubstr("I::onList  [\"\\"));
}
