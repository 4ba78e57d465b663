// A service: other applications may change its volume, with a token that permits it.
//
// Tokens come in over the control server, which every service has: whoever may connect to that may announce them, with
// attributes that say what they permit. What the service itself offers is on a server of its own, "VOLUME" + uid.
//
//     volume-service --authorization-token=volume
//     corvanectl token create volume 42 attributes.json          with {"volume":{"change":1}} in the file
//     corvanectl call VOLUMEvolume IVolume::setVolume token=42 level=30
#include <corvane/Application.h>
#include <corvane/ApplicationExec.h>
#include <corvane/common/RPCServer.h>
#include <corvane/common/Service.h>
#include <corvane/common/TokenStore.h>
#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/Exception.h>
#include <corvane/foundation/ValueObjects.h>
#include <iostream>
#include <stdexcept>
#include <string>

namespace
{

constexpr unsigned int HIGHEST_LEVEL = 100;

/// The server with the service's own methods. What a handler throws, its caller gets as an error.
class VolumeServer : public Corvane::RPCServer
{
public:
    VolumeServer(const std::string& uid, const Corvane::TokenStore& tokens)
        : RPCServer(("VOLUME" + uid).c_str()), tokens(tokens)
    {
        interfaces["IVolume"] = {{"setVolume", static_cast<Handler>(&VolumeServer::setVolume)},
                                 {"getVolume", static_cast<Handler>(&VolumeServer::getVolume)}};
    }
    /// No call may find half a server: the base would go on answering while these members are gone already.
    ~VolumeServer() override { RPCServer::shutdown(); }

private:
    std::string setVolume(const Corvane::IRPC::RPCSynchronousMethodObject& request)
    {
        Corvane::Deserializer parameters(request.getParameters());
        const auto token = Corvane::deserialize<unsigned int>("token", parameters);
        const auto newLevel = Corvane::deserialize<unsigned int>("level", parameters);
        if (newLevel > HIGHEST_LEVEL)
            throw std::invalid_argument("level: expected at most " + std::to_string(HIGHEST_LEVEL));
        // An unknown token, and one that nothing is said about, permit nothing.
        if (tokens.find(token, "volume", "change").value_or(0) == 0)
            throw std::runtime_error("token " + std::to_string(token) + " does not permit to change the volume");
        level = newLevel;
        std::cout << "volume " << newLevel << std::endl;
        return Corvane::IRPC::RPCReturnObject(request).serialize();
    }
    std::string getVolume(const Corvane::IRPC::RPCSynchronousMethodObject& request)
    {
        return Corvane::IRPC::RPCResultObject(request, Corvane::UInt32Object(level)).serialize();
    }

    const Corvane::TokenStore& tokens;
    unsigned int level = 50; // no lock: the handlers of one server run one at a time
};

class VolumeService : public Corvane::Application, public Corvane::Service
{
public:
    using Application::Application;

    std::string getUid() override { return Application::getUid(); }

    void init() override
    {
        Application::init();
        server.init();
        setState(STATE_RUNNING);
    }
    // There is nothing to save here, so the request is fulfilled at once. The main loop notices within five seconds.
    void terminate() override { setState(STATE_TERMINATED); }

    // These two are called on the control server's thread, setVolume on that of the server above: the store is
    // thread-safe. What it throws for a token too many goes to whoever announced that token.
    void createAuthorizationToken(unsigned int token, Corvane::TokenStore::Attributes attributes) override
    {
        tokens.create(token, attributes);
        showCount();
    }
    void deleteAuthorizationToken(unsigned int token) override
    {
        tokens.remove(token);
        showCount();
    }

private:
    // Not the tokens themselves: who knows one may use it.
    void showCount() { std::cout << "tokens " << tokens.getCount() << std::endl; }

    Corvane::TokenStore tokens;
    VolumeServer server{getUid(), tokens}; // after the store, and so destroyed before it
};

} // namespace

int main(int argc, char** argv)
{
    try {
        Corvane::ApplicationExec::runtimeInit("volume-service");
        Corvane::ApplicationExec exec; // first, so that managers still hear how the service ends
        VolumeService service(argc, argv);
        exec.run(&service);
        return 0;
    } catch (const Corvane::Exception& exception) {
        std::cerr << "volume-service: " << exception.what() << std::endl;
    } catch (const std::exception& exception) {
        std::cerr << "volume-service: " << exception.what() << std::endl;
    }
    return 1;
}
