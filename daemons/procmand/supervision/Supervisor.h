#pragma once

#include "box/Box.h"
#include "supervision/Links.h"
#include "supervision/StateTracker.h"
#include "supervision/Stopper.h"
#include "windows/FocusControl.h"
#include "windows/WindowService.h"

#include <corvane/foundation/Deserializer.h>

namespace Procmand
{

/// Leads the applications of the box from their start to their end, and to their next start. Guarded by the lock of the
/// box.
class Supervisor : private ILinkListener
{
public:
    Supervisor(Box& box, FocusControl& focus, WindowService& windows);

    /// Begins to watch for control servers. @param folder  where they appear
    void start(const std::string& folder);

    /// Accepts an application; what comes of it is announced. @return its uid
    /// @throws std::runtime_error  nothing is started any more, or its uid or its name is taken
    std::string launch(LaunchRequest request);
    /// Takes an application up that runs already. Its uid must not be known.
    void adopt(const std::string& uid, Process process);
    /// The application has registered itself: it has its control server up by now, if it has one.
    void greet(ManagedApplication& application);
    /// Takes an application up that an earlier process manager has watched.
    void recover(const Recovery::Application& application);
    /// Begins to stop an application.
    /// @throws std::out_of_range  it is not known
    void stop(const std::string& uid);
    /// Begins to stop an application, to be started again at once.
    /// @throws std::out_of_range  it is not known. @throws std::runtime_error  it was started by hand
    void restart(const std::string& uid);
    /// Begins to stop everything that was launched. @return whether there is anything to wait for
    bool stopAll();
    /// Lets go of all applications, which live on.
    void disconnectAll();
    /// @return whether a program is being started
    bool isStarting();

private:
    void onConnected(ManagedApplication& application) override;
    void onDisconnected(ManagedApplication& application) override;
    void onSilence(ManagedApplication& application) override;
    void onNotification(ManagedApplication& application, const std::string& name, const std::string& payload) override;
    void onState(ManagedApplication& application, const std::string& state, bool isFocused) override;

    void giveFocusBack(const ManagedApplication& application);
    /// Makes sure that a launch gets its own uid and its own name. Both are looked for among uids and names alike: a
    /// word of either kind stands for one application. One that was given up makes way and is forgotten.
    /// @throws std::runtime_error  one of them is taken
    void takeWords(const LaunchRequest& request);
    void startProgram(ManagedApplication& application);
    void beginStop(ManagedApplication& application, StopPurpose purpose);
    /// Waits until the program runs. A job of the workers. @return why it does not, empty when it does
    std::string runProgram(const std::string& uid, unsigned long generation, const std::string& mark,
                           const LaunchRequest& request);
    /// Takes hold of a process that waits for its program, and writes it into the history. A job of the workers.
    /// @throws std::system_error
    void noteProcess(const std::string& uid, unsigned long generation, pid_t pid);
    void onStarted(ManagedApplication& application);
    void onStartFailure(ManagedApplication& application, const std::string& reason);
    void watch(ManagedApplication& application);
    void watchProcess(ManagedApplication& application);
    /// The application has given a sign of life; the next one is awaited.
    void awaitKeepAlive(ManagedApplication& application);
    void checkKeepAlive(ManagedApplication& application, ManagedApplication::Clock::time_point late);
    void scheduleCheck(ManagedApplication& application, ManagedApplication::Clock::duration silence);
    void onStateChange(ManagedApplication& application, const std::string& payload,
                       Corvane::Deserializer& deserializer);
    void onKeepAlive(ManagedApplication& application, const std::string& state);
    /// Announces a keep-alive in the application's name, where none of it was heard yet.
    void makeUpForKeepAlive(ManagedApplication& application, const std::string& state);
    /// The application has told its state, in whatever way. In ABORTED it has some time to end.
    void noteAbort(ManagedApplication& application, const std::string& state);
    void onHungCrash(ManagedApplication& application);
    void onRunaway(ManagedApplication& application);
    void onProcessEnd(ManagedApplication& application);
    void finishEnd(ManagedApplication& application);
    /// Begins to kill what the application's last run has left behind.
    void removeRemains(const ManagedApplication& application);
    void recordEnd(const ManagedApplication& application, pid_t pid);
    void settle(ManagedApplication& application, StopPurpose purpose, const std::string& means);
    /// @param runTime  of the process that has ended; zero when there was none
    void restartByPolicy(ManagedApplication& application, bool failed, std::chrono::milliseconds runTime);
    void giveUp(ManagedApplication& application);
    void forgetTheOldest();
    void restartNow(ManagedApplication& application);
    void forget(ManagedApplication& application);

    Box& box;
    FocusControl& focus;
    WindowService& windows;
    StateTracker states;
    Links links;
    Stopper stopper;
};

} // namespace Procmand
