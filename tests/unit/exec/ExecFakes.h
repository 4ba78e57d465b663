#pragma once

#include "Journal.h"
#include <corvane/Application.h>
#include <corvane/common/Service.h>
#include <functional>
#include <string>

namespace Corvane::Test
{

/// An application whose steps are in the journal, and which does in each what the test wants.
class SteppingApplication : public Application
{
public:
    using Application::Application;

    void init() override
    {
        journal.add("init");
        if (beforeInit)
            beforeInit();
        Application::init();
    }
    void run() override
    {
        journal.add("run");
        if (mainLoop)
            mainLoop();
    }
    void addListener(IListener* listener) override
    {
        journal.add("addListener in " + getState());
        Application::addListener(listener);
    }
    void removeListener(IListener* listener) override
    {
        journal.add("removeListener");
        Application::removeListener(listener);
    }

    std::function<void()> beforeInit;
    std::function<void()> mainLoop;
};

/// The same as a service.
class SteppingService : public SteppingApplication, public Service
{
public:
    using SteppingApplication::SteppingApplication;

    std::string getUid() override { return Application::getUid(); }
    void createAuthorizationToken(unsigned int token, MapObject<MapObject<int>>) override
    {
        journal.add("create " + std::to_string(token));
        if (onCreation)
            onCreation();
    }
    void deleteAuthorizationToken(unsigned int token) override { journal.add("delete " + std::to_string(token)); }

    std::function<void()> onCreation;
};

} // namespace Corvane::Test
