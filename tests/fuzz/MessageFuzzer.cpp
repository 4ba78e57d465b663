#include <corvane/APPRPCServer.h>
#include <corvane/Window.h>
#include <corvane/foundation/Deserializer.h>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

using namespace Corvane;

class FuzzedWindow : public Window
{
public:
    using Window::handleFocus;
    using Window::Window;
    void bringToFront() override {}
    void sendToBack() override {}
    void bringForward() override {}
    void sendBackward() override {}
    std::string getTitle() const override { return "fuzzed"; }
    // The real one lowers the nice value of the fuzzer.
    void handleFocus(bool) override {}
};

/// A window and its server that nobody else reaches: messages go in as texts.
struct Target {
    std::string program = "fuzz";
    std::string type = "--application-type=fuzz";
    std::vector<char*> arguments{program.data(), type.data(), nullptr};
    FuzzedWindow window{2, arguments.data()};
    APPRPCServer server{&window};
};

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/// An integer that cannot be represented comes back as it was written, so that no parser here takes the answer.
/// @return the answer with another id
std::string withoutGreatId(const std::string& answer)
{
    const std::string head = R"({"jsonrpc":"2.0","id":)";
    const auto end = answer.find_first_not_of("-0123456789", head.size());
    if (!answer.starts_with(head) || end == answer.npos || answer.find(R"(,"error":{"code":-32700)", end) != end)
        return answer;
    return head + "null" + answer.substr(end);
}

/// An answer is one line of JSON, and is a reply or a list of replies.
void checkAnswer(const std::string& answer)
{
    if (answer.empty())
        return;
    require(answer.find('\n') == answer.npos);
    if (answer.front() == '[') {
        Deserializer batch("{\"replies\":" + answer + "}");
        require(batch.hasMember("replies"));
        return;
    }
    Deserializer reply(withoutGreatId(answer));
    require(reply.readString("jsonrpc") == "2.0");
    require(reply.hasMember("id"));
    require(reply.hasMember("result") != reply.hasMember("error"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Target target;
    const std::string message(reinterpret_cast<const char*>(data), size);
    checkAnswer(target.server.handleRPCSynchronousMethodPayload(message));
    return 0;
}
