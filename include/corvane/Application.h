#pragma once

#include <corvane/common/ActiveObject.h>
#include <corvane/foundation/ComplexObject.h>
#include <corvane/foundation/Export.h>
#include <corvane/foundation/Mutex.h>
#include <corvane/foundation/ReturnCode.h>
#include <corvane/interfaces/IApplication.h>
#include <corvane/interfaces/IApplicationManager.h>
#include <cstdint>
#include <string>
#include <vector>

namespace Corvane
{

class Application;
class PlatformHelper;

/// Every application of this process that has run `init()` and has not been destroyed. Guarded by `shutdownMutex`.
extern CORVANE_EXPORT std::vector<Application*> applications;
/// Guards `applications`. Held while a fatal signal is announced to the applications' listeners.
extern CORVANE_EXPORT Mutex shutdownMutex;

/// The base object of an application process: identity, lifecycle, proof of life, priority and statistics.
///
/// The program's `main` constructs its subclass, calls `init()` and `run()`, on the main thread. State changes and
/// statistics may come from any thread; they are not synchronised (see docs/threading.md). `init()` installs handlers
/// for SIGILL, SIGABRT, SIGFPE, SIGSEGV, SIGTERM and SIGBUS that announce STATE_ABORTED before the process dies; the
/// last application of a process puts the previous ones back.
///
///     int main(int argc, char** argv) { MyApplication application(argc, argv); application.init(); application.run();
///     }
class CORVANE_EXPORT Application : public ComplexObject,
                                   public virtual IApplication,
                                   public virtual IApplication::IApplicationNotifier
{
public:
    using IApplication::activate;
    using IApplication::getRuntimeStatistics;
    using IApplication::getState;
    using IApplication::setState;
    using IApplication::suspend;
    using IApplication::terminate;

    /// Finds the launch parameters: in the environment variable CORVANE_APP_PARAMETERS, else on the command line. The
    /// options that it reads are texts, so none has a bad value; a Window reads others besides.
    /// @param argv  not copied; must live as long as the application
    /// @throws Exception  code 1: `argc` is 0 or `argv` is null
    /// @throws SerialError  the environment variable holds no launch parameters
    Application(int argc, char** argv);

    /// Goes to STATE_LOADING, takes over the fatal signals, starts the platform helper (unless the program path
    /// contains "QAX", "ORU" or "WEB") and, when the application has a main loop of its own, the keep-alive thread.
    /// STATE_RUNNING is left to the application.
    void init() override;
    /// Announces STATE_TERMINATED to the listeners that are left, and ends the keep-alive thread. What a listener
    /// throws is one debug line.
    ~Application() override;

    /// Sends a keep-alive at once and then every 5,000 ms; returns within one round after the state has become
    /// STATE_TERMINATED or STATE_RUNAWAY. Returns at once when `runsInMain()` is true.
    virtual void run();
    /// @return whether the application's own main loop occupies the calling thread; keep-alives then have their own
    /// thread
    virtual bool runsInMain();

    /// @return a copy of the current state. Not synchronised: while another thread stores one it may be torn, made of
    /// two.
    std::string getState() override;
    /// Changes the state, if the rules allow it, and tells the listeners; a refusal is silent. LOADING is accepted from
    /// UNINITIALIZED only, SUSPENDING from LOADING and RUNNING, RESUMING from SUSPENDING and SUSPENDED, TERMINATING
    /// from everything but TERMINATED, any other text from everywhere. The state held already is never a change.
    /// Takes no lock; see docs/threading.md for what that means to two threads.
    /// @param newState  up to LONGEST_STATE bytes. A longer text is stored as well, in other memory: the caller sees to
    ///                  it that no other thread reads or sets the state meanwhile.
    void setState(const std::string& newState) override;
    /// Asks for STATE_RESUMING.
    void activate() override;
    /// Asks for STATE_SUSPENDING.
    void suspend() override;
    /// Asks for STATE_TERMINATING.
    void terminate() override;
    /// Use of the processor since the previous call (32-bit microseconds that wrap: right for intervals up to 71
    /// minutes), and the largest resident set so far. The first call's figure has no meaning; two calls in one
    /// microsecond divide by zero. One thread at a time.
    RuntimeStatistics getRuntimeStatistics() override;

    /// Tells every listener; overriding subclasses hear it first. What a listener throws ends the round and passes
    /// through; on the keep-alive thread it is one debug line, and the thread goes on.
    void onKeepAlive(const std::string& uid, const std::string& state) override;
    void onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState) override;

    /// Listeners that are no IApplicationListener are refused. Thread-safe, also from inside a listener.
    void addListener(IListener* listener) override;
    void removeListener(IListener* listener) override;

    /// @return the authorization token, or the process id in decimal where there is none
    std::string getUid();
    /// @return the environment variable CORVANE_APP_HOSTNAME, "Unknown" without it
    std::string getHostName();
    /// @return the program path, `argv[0]`
    std::string getProcessName();

    /// @return the nice value of this process. @throws Exception  code 1 when the system does not tell it
    int getPriority();
    /// Sets the nice value of this process.
    /// @param priority  -20 (most favoured) to 19; lowering it needs CAP_SYS_NICE or RLIMIT_NICE
    /// @return 0
    /// @throws Exception  code 1 when out of range, code 7 when the system refuses; the priority is then unchanged
    ReturnCode setPriority(int priority);

private:
    /// Proves that the application is alive, every 5 s, while its main loop is its own.
    class KeepAliveThread : public ActiveObject
    {
    public:
        explicit KeepAliveThread(Application* application);
        ~KeepAliveThread() override;
        int thread() override;

    private:
        Application* const application;
    };

    static IApplicationManager::LaunchParameters findApplicationLaunchParameters(int argc, char** argv);
    static void initSignalHandler(Application* application);
    static void uninitSignalHandler(Application* application);
    static void signalHandler(int signal);
    bool needsPlatformHelper() const;
    /// The uid without a copy, so that the announcement of a fatal signal allocates nothing. `buffer` holds the text of
    /// a process id.
    const std::string& findUid(std::string& buffer) const;
    bool isChangeAllowed(const std::string& newState);
    template <class Call>
    void tellListeners(Call call);

    IApplicationManager::LaunchParameters launchParameters;
    int argc;
    char** argv;
    PlatformHelper* platformHelper; ///< owned, may be null
    KeepAliveThread keepAliveThread;
    Mutex listenersMutex;
    std::vector<IApplication::IApplicationListener*> listeners; ///< not owned, in the order of registration
    bool listenersChanged;
    std::string state;

protected:
    bool stopRequested; ///< `run()` leaves its loop when true; a subclass may set it

private:
    std::uint32_t lastSampleTimeUs;
    std::uint32_t lastCpuTimeUs;
};

} // namespace Corvane
