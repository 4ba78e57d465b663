#pragma once

#include <corvane/Application.h>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <support/TemporaryDirectory.h>
#include <vector>

namespace Corvane::Test
{

// The names of the states.
inline const std::string UNINITIALIZED = ILifecycleManagement::STATE_UNINITIALIZED;
inline const std::string LOADING = ILifecycleManagement::STATE_LOADING;
inline const std::string RUNNING = ILifecycleManagement::STATE_RUNNING;
inline const std::string SUSPENDING = ILifecycleManagement::STATE_SUSPENDING;
inline const std::string SUSPENDED = ILifecycleManagement::STATE_SUSPENDED;
inline const std::string RESUMING = ILifecycleManagement::STATE_RESUMING;
inline const std::string TERMINATING = ILifecycleManagement::STATE_TERMINATING;
inline const std::string TERMINATED = ILifecycleManagement::STATE_TERMINATED;
inline const std::string ABORTED = ILifecycleManagement::STATE_ABORTED;
inline const std::string RUNAWAY = ILifecycleManagement::STATE_RUNAWAY;

/// What `main` gets.
class ProgramArguments
{
public:
    ProgramArguments(std::vector<std::string> arguments) : arguments(std::move(arguments))
    {
        for (std::string& argument : this->arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
    }
    ProgramArguments(const ProgramArguments&) = delete;
    ProgramArguments& operator=(const ProgramArguments&) = delete;

    int getCount() const { return static_cast<int>(arguments.size()); }
    char** getPointers() { return pointers.data(); }

private:
    std::vector<std::string> arguments;
    std::vector<char*> pointers;
};

/// The application of a test; its program path keeps the platform helper away.
class TestApplication : private ProgramArguments, public Application
{
public:
    explicit TestApplication(std::vector<std::string> arguments = {"/usr/bin/QAX"})
        : ProgramArguments(std::move(arguments)), Application(getCount(), getPointers())
    {
    }

    bool runsInMain() override { return hasOwnLoop; }
    using Application::stopRequested;

    bool hasOwnLoop = false;
};

/// Keeps what it hears, and may act on it.
class RecordingListener : public IApplication::IApplicationListener
{
public:
    void onKeepAlive(const std::string& uid, const std::string& state) override
    {
        uids.push_back(uid);
        hear("alive " + state);
    }
    void onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState) override
    {
        uids.push_back(uid);
        hear(oldState + " > " + newState);
    }

    std::vector<std::string> heard;
    std::vector<std::string> uids;
    std::function<void()> onCall = [] {};

private:
    void hear(const std::string& what)
    {
        heard.push_back(what);
        onCall();
    }
};

/// Tests of an application that was launched without parameters.
class ApplicationTest : public testing::Test
{
protected:
    ScopedEnvironment noParameters{"CORVANE_APP_PARAMETERS", nullptr};
};

} // namespace Corvane::Test
