#include <corvane/Application.h>
#include <corvane/ApplicationExec.h>
#include <corvane/common/RPCClient.h>
#include <corvane/common/Service.h>
#include <corvane/common/TaskDelay.h>
#include <iostream>
#include <string_view>
#include <unistd.h>

namespace Corvane
{

/// In place of the library's: a main loop looks at the state at once, not in five seconds.
void OS_TaskDelayMsec(unsigned int)
{
    usleep(20'000);
}

namespace Test
{

namespace
{

/// A service that prints the tokens which reach it and runs until it is told to terminate.
class DrivenService : public Application, public Service
{
public:
    using Application::Application;
    using Application::terminate;

    std::string getUid() override { return Application::getUid(); }
    void init() override
    {
        Application::init();
        setState(STATE_RUNNING);
        std::cout << "running" << std::endl;
    }
    void terminate() override
    {
        Application::terminate();
        setState(STATE_TERMINATED);
    }
    void createAuthorizationToken(unsigned int token, MapObject<MapObject<int>> attributes) override
    {
        std::cout << "create " << token << " " << attributes.MapBase::serialize() << std::endl;
    }
    void deleteAuthorizationToken(unsigned int token) override { std::cout << "delete " << token << std::endl; }
};

/// An application without a window that looks for control servers once, and ends.
class PlainApplication : public Application
{
public:
    using Application::Application;

    void onKeepAlive(const std::string& uid, const std::string& state) override
    {
        Application::onKeepAlive(uid, state);
        std::cout << RPCClient::listServers().size() << " servers" << std::endl;
        setState(STATE_TERMINATED);
    }
};

template <class Runnable>
void execute(int argc, char** argv)
{
    ApplicationExec exec;
    Runnable application(argc, argv);
    exec.run(&application);
}

} // namespace

} // namespace Test

} // namespace Corvane

int main(int argc, char** argv)
{
    using namespace Corvane::Test;
    const bool isPlain = argc > 1 && std::string_view(argv[1]) == "--plain";
    isPlain ? execute<PlainApplication>(argc, argv) : execute<DrivenService>(argc, argv);
}
