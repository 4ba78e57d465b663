#pragma once

#include "ServiceManager.h"
#include "box/Box.h"
#include "launch/OutputWatch.h"
#include "server/ManagerServer.h"
#include "supervision/Supervisor.h"
#include "windows/FocusControl.h"
#include "windows/WindowService.h"

#include <corvane/common/FileDescriptor.h>

namespace Procmand
{

/// The process manager as a whole.
///
///     Manager manager(settings);
///     manager.run();
///
/// Main thread only. SIGTERM and SIGINT must be blocked in every thread before it is constructed: it takes them itself.
class Manager
{
public:
    explicit Manager(const Settings& settings);

    /// Brings the server up, takes up what runs already, and serves until SIGTERM or SIGINT.
    /// @throws RPCError  the server cannot be brought up: above all, another process manager lives
    void run();

private:
    void end();
    void takeUpTheBox();
    void findServers();
    void onSignal();
    void checkEnd();
    void feedWatchdog();

    const ServiceManager serviceManager;
    Box box;
    OutputWatch outputWatch{box.files};
    FocusControl focus;
    WindowService windows;
    Supervisor supervisor;
    ManagerServer server;
    Corvane::FileDescriptor signals;
};

} // namespace Procmand
