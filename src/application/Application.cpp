#include <corvane/Application.h>

#include "Containment.h"
#include "ListenerWalk.h"

#include <corvane/common/PlatformHelper.h>
#include <corvane/common/TaskDelay.h>

namespace Corvane
{

namespace
{

using Listener = IApplication::IApplicationListener;

/// Stores a state in the place of the one that is held. A function of its own, so that the thread sanitizer is told of
/// these accesses alone.
/// @return the state before
std::string exchangeState(std::string& held, const std::string& newState)
{
    std::string oldState = held;
    held = newState;
    return oldState;
}

} // namespace

Application::Application(int argc, char** argv)
    : launchParameters(findApplicationLaunchParameters(argc, argv)),
      argc(argc),
      argv(argv),
      platformHelper(nullptr),
      keepAliveThread(this),
      listenersMutex("Application::listenersMutex", 0),
      listenersChanged(false),
      state(LONGEST_STATE, '\0'),
      stopRequested(false),
      lastSampleTimeUs(0),
      lastCpuTimeUs(0)
{
    // Over the zeros, which stay behind it: a text of any length up to theirs is stored without another allocation, and
    // whoever copies it meanwhile gets a torn text at worst, never memory that was freed or not yet written.
    state = STATE_UNINITIALIZED;
}

void Application::init()
{
    ComplexObject::init();
    setState(STATE_LOADING);
    initSignalHandler(this);
    if (needsPlatformHelper()) {
        platformHelper = new PlatformHelper(launchParameters.getAuthorizationToken());
        platformHelper->startHelper();
    }
    if (runsInMain())
        keepAliveThread.init();
}

Application::~Application()
{
    delete platformHelper;
    uninitSignalHandler(this);
    contain(__func__, __LINE__, [this] { Application::setState(STATE_TERMINATED); });
    // The thread tells the listeners: it has to end before they, their mutex and the state are destroyed, and its own
    // object comes after them.
    keepAliveThread.exit();
}

void Application::run()
{
    constexpr unsigned int KEEP_ALIVE_INTERVAL_MS = 5000;
    if (runsInMain())
        return;
    while (!stopRequested) {
        const std::string current = getState();
        if (current == STATE_TERMINATED || current == STATE_RUNAWAY)
            return;
        onKeepAlive(getUid(), getState());
        OS_TaskDelayMsec(KEEP_ALIVE_INTERVAL_MS);
    }
}

bool Application::runsInMain()
{
    return false;
}

std::string Application::getState()
{
    return state;
}

void Application::setState(const std::string& newState)
{
    if (!isChangeAllowed(newState))
        return;
    const std::string oldState = exchangeState(state, newState);
    std::string buffer;
    onStateChange(findUid(buffer), oldState, newState);
}

bool Application::isChangeAllowed(const std::string& newState)
{
    if (getState() == newState)
        return false;
    if (newState == STATE_LOADING)
        return getState() == STATE_UNINITIALIZED;
    if (newState == STATE_SUSPENDING)
        return getState() == STATE_LOADING || getState() == STATE_RUNNING;
    if (newState == STATE_RESUMING)
        return getState() == STATE_SUSPENDING || getState() == STATE_SUSPENDED;
    if (newState == STATE_TERMINATING)
        return getState() != STATE_TERMINATED;
    // Deliberate: the owner of the process sets the states of completion, and the way to ABORTED is never barred.
    return true;
}

void Application::activate()
{
    setState(STATE_RESUMING);
}

void Application::suspend()
{
    setState(STATE_SUSPENDING);
}

void Application::terminate()
{
    setState(STATE_TERMINATING);
}

void Application::onKeepAlive(const std::string& uid, const std::string& state)
{
    tellListeners([&](Listener& listener) { listener.onKeepAlive(uid, state); });
}

void Application::onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState)
{
    tellListeners([&](Listener& listener) { listener.onStateChange(uid, oldState, newState); });
}

template <class Call>
void Application::tellListeners(Call call)
{
    walkListeners(listenersMutex, listeners, listenersChanged, call);
}

void Application::addListener(IListener* listener)
{
    // Before the lock: the cast of a stale pointer is a fault, which the listeners are still to hear of.
    auto* const wanted = dynamic_cast<Listener*>(listener);
    addToWalk(listenersMutex, listeners, listenersChanged, wanted);
}

void Application::removeListener(IListener* listener)
{
    auto* const unwanted = dynamic_cast<Listener*>(listener);
    removeFromWalk(listenersMutex, listeners, listenersChanged, unwanted);
}

} // namespace Corvane
