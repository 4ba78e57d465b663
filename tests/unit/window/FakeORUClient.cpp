#include "FakeORUClient.h"

#include "Journal.h"
#include <corvane/common/RPCError.h>
#include <corvane/foundation/Exception.h>
#include <stdexcept>

namespace Corvane::Test
{

namespace
{

using Rect = ISurfaceCompositing::Rect;

class FakeORUClient : public ORUClient
{
public:
    FakeORUClient() { ++manager.clients; }
    ~FakeORUClient() override
    {
        note("~client");
        --manager.clients;
    }

    void init() override { note("init"); }

    ResourceToken getResource(const std::string& uid, const ISurfaceManagement::CreationSettings& settings) override
    {
        note("getResource", uid + ", " + settings.serialize());
        const bool granted = manager.tokenState == ResourceToken::STATE_GRANTED;
        return {manager.tokenState, granted ? manager.resourceIndex : 0};
    }
    void releaseResource(const ResourceToken& token) override
    {
        note("releaseResource", std::to_string(token.getResourceIndex()));
    }

    void setVisibility(const unsigned int& index, bool visibility) override
    {
        note("setVisibility", index, visibility ? "true" : "false");
        manager.visibility = visibility;
    }
    bool getVisibility(const unsigned int& index) override
    {
        note("getVisibility", index);
        return manager.visibility;
    }
    void setOpacity(const unsigned int& index, unsigned int opacity) override
    {
        note("setOpacity", index, std::to_string(opacity));
        manager.opacity = opacity;
    }
    unsigned int getOpacity(const unsigned int& index) override
    {
        note("getOpacity", index);
        return manager.opacity;
    }
    void setZOrder(const unsigned int& index, unsigned int zOrder) override
    {
        note("setZOrder", index, std::to_string(zOrder));
        manager.zOrder = manager.forcedZOrder.value_or(zOrder);
    }
    unsigned int getZOrder(const unsigned int& index) override
    {
        note("getZOrder", index);
        return manager.zOrder;
    }
    void setLocation(const unsigned int& index, const Rect& location) override
    {
        note("setLocation", index, location.serialize());
        manager.location = location;
    }
    Rect getLocation(const unsigned int& index) override
    {
        note("getLocation", index);
        return manager.location;
    }
    void bringToFront(const unsigned int& index) override { note("bringToFront", index); }
    void sendToBack(const unsigned int& index) override { note("sendToBack", index); }
    void bringForward(const unsigned int& index) override { note("bringForward", index); }
    void sendBackward(const unsigned int& index) override { note("sendBackward", index); }

private:
    static void note(const std::string& call, const std::string& arguments = "")
    {
        journal.add("client." + call + "(" + arguments + ")");
        if (manager.failingCall == call)
            throw std::runtime_error(call + " failed");
        if (manager.failingCall == call + " with code 2")
            throw Exception(RETURN_INVALID_STATE);
        if (manager.failingCall == call + " as refused")
            throw RPCError(RPCError::Reason::CALL_FAILED, -32000, "refused");
        if (manager.answersNoSetters && call.starts_with("set"))
            throw RPCError(RPCError::Reason::TIMED_OUT, RETURN_TIMED_OUT, "Timed out");
    }
    static void note(const std::string& call, unsigned int index, const std::string& value = "")
    {
        note(call, std::to_string(index) + (value.empty() ? "" : ", " + value));
    }
};

} // namespace

} // namespace Corvane::Test

Corvane::ORUClient* Corvane::ORUClient::create(Client::Type type)
{
    using namespace Corvane::Test;
    manager.createdType = type;
    journal.add("create(" + std::to_string(type) + ")");
    if (manager.failingCall == "create")
        throw std::runtime_error("create failed");
    return new FakeORUClient;
}
