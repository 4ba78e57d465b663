#pragma once

#include <atomic>
#include <corvane/common/RPCServer.h>
#include <string>
#include <support/Await.h>

namespace Corvane::Test
{

/// A server with one interface, "ITest", for tests of everything that all servers have in common.
class TestServer : public RPCServer
{
public:
    explicit TestServer(const char* name = "TEST");
    ~TestServer() override;

    /// Answers with the member "text" of the parameters.
    std::string echo(const IRPC::RPCSynchronousMethodObject& request);
    /// Answers with the member "text" of the parameters, "times" times.
    std::string repeat(const IRPC::RPCSynchronousMethodObject& request);
    /// Answers with a text that is written on several lines.
    std::string writeOnSeveralLines(const IRPC::RPCSynchronousMethodObject& request);
    /// Counts, and answers with nothing.
    std::string count(const IRPC::RPCSynchronousMethodObject& request);
    /// Raises the notification "ITest::onRing" with the member "number", then answers.
    std::string ring(const IRPC::RPCSynchronousMethodObject& request);
    /// Answers only after `release` has been given something.
    std::string hold(const IRPC::RPCSynchronousMethodObject& request);
    /// Waits for the handler that runs, which is itself.
    std::string waitForItself(const IRPC::RPCSynchronousMethodObject& request);
    std::string throwRuntimeError(const IRPC::RPCSynchronousMethodObject& request);
    std::string throwNumber(const IRPC::RPCSynchronousMethodObject& request);

    void notifyRing(unsigned int number);
    using RPCServer::endCalls;

    std::atomic<int> counted{0};
    Mailbox<bool> held;    ///< gets a value when `hold` begins
    Mailbox<bool> release; ///< lets one `hold` end
};

} // namespace Corvane::Test
