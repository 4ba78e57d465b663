#pragma once

#include <corvane/foundation/Export.h>

namespace Corvane
{

class APPRPCServer;
class Application;
class Service;

/// The ready-made main routine of an application without a window: a service, or a plain application.
///
///     int main(int argc, char** argv)
///     {
///         Corvane::ApplicationExec::runtimeInit("volume");
///         Corvane::ApplicationExec exec;
///         VolumeService service(argc, argv);
///         exec.run(&service);
///     }
///
/// A service, which derives from Application and from Service, gets its control server. A plain application has no
/// control server of its own: its managers see it as a process only, and whoever listens inside the process hears of
/// its changes. docs/services.md tells more.
///
/// Declare it before the application, so that it is destroyed after it: the managers then still hear how the service
/// ends. Main thread only.
class CORVANE_EXPORT ApplicationExec
{
public:
    ApplicationExec();
    ApplicationExec(const ApplicationExec&) = delete;
    ApplicationExec& operator=(const ApplicationExec&) = delete;
    /// Takes the control server down. The application is the caller's.
    ~ApplicationExec();

    /// Names the process in its debug output; to be called before anything is printed.
    static void runtimeInit(const char* name);

    /// Brings up the control server of a service, initialises the application, runs its main loop until that returns,
    /// and waits for a handler that is still at work. Once an ApplicationExec. STATE_RUNNING is left to the
    /// application.
    /// @throws whatever a step throws, after one debug line for a `std::exception`. The service may be destroyed then,
    ///         whatever its state: the control server refuses all calls.
    void run(Application* application);

private:
    void bringUpServer(Service* service);
    void endCalls();

    APPRPCServer* server; ///< owned; null for a plain application
};

} // namespace Corvane
