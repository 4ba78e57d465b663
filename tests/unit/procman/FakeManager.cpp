#include "FakeManager.h"

namespace Corvane::Test
{

namespace
{

/// A result that is JSON text already.
class JsonValue : public SerialObject
{
public:
    explicit JsonValue(std::string json) : json(std::move(json)) {}
    std::string getObjectType() const override { return "JsonValue"; }
    std::unique_ptr<SerialObject> clone() const override { return std::make_unique<JsonValue>(*this); }
    void serialize(Serializer& serializer) const override { serializer.writeJson("", json); }
    std::string serialize() const override { return json; }
    void serialize(const std::string& key, Serializer& serializer) const override { serializer.writeJson(key, json); }

private:
    std::string json;
};

} // namespace

FakeManager::FakeManager() : RPCServer("ORU") {}

FakeManager::~FakeManager()
{
    RPCServer::shutdown();
}

std::string FakeManager::handleRPCSynchronousMethod(const IRPC::RPCSynchronousMethodObject& request)
{
    const std::string method = request.getInterface() + "::" + request.getMethod();
    std::lock_guard guard(mutex);
    calls.push_back(method + " " + request.getParameters());
    if (!refusal.empty())
        return IRPC::RPCErrorObject(request, refusal).serialize();
    const auto result = results.find(method);
    if (result == results.end())
        return IRPC::RPCReturnObject(request).serialize();
    return IRPC::RPCResultObject(request, JsonValue(result->second)).serialize();
}

std::vector<std::string> FakeManager::getCalls()
{
    std::lock_guard guard(mutex);
    return calls;
}

void FakeManager::setResult(const std::string& method, const std::string& result)
{
    std::lock_guard guard(mutex);
    results[method] = result;
}

void FakeManager::refuse(const std::string& message)
{
    std::lock_guard guard(mutex);
    refusal = message;
}

} // namespace Corvane::Test
