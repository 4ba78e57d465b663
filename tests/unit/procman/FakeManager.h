#pragma once

#include <corvane/common/RPCServer.h>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace Corvane::Test
{

/// A server "ORU" that writes down what it is called with and answers as it is told.
class FakeManager : public RPCServer
{
public:
    FakeManager();
    ~FakeManager() override;

    std::string handleRPCSynchronousMethod(const IRPC::RPCSynchronousMethodObject& request) override;

    /// The calls so far, as "IWindowCompositing::setOpacity {...}".
    std::vector<std::string> getCalls();
    /// What the next calls of a method return, as JSON text; null where nothing is given.
    void setResult(const std::string& method, const std::string& result);
    /// From now on every call is refused with this message.
    void refuse(const std::string& message);

private:
    std::mutex mutex;
    std::vector<std::string> calls;
    std::map<std::string, std::string> results;
    std::string refusal;
};

} // namespace Corvane::Test
