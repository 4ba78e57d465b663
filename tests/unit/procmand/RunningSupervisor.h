#pragma once

#include "supervision/Supervisor.h"

#include <corvane/common/RPCServer.h>
#include <support/ChildProcess.h>
#include <support/TemporaryDirectory.h>
#include <thread>

namespace Procmand
{

/// A supervisor with one application, "tester": its process is a child of the test, its control server is the test's
/// own.
struct RunningSupervisor {
    /// @param settings  but for the state folder, which is a new one
    RunningSupervisor(Settings settings, Notices::Sink sink)
        : box(inFolder(std::move(settings), state), std::move(sink))
    {
        server.init();
        std::lock_guard guard(box.lock);
        supervisor.start(runtime.directory.getPath());
        supervisor.adopt("tester", Process::find(child.getPid(), false).value());
    }
    ~RunningSupervisor()
    {
        {
            std::lock_guard guard(box.lock);
            supervisor.disconnectAll();
        }
        box.workers.finish();
        box.loop.stop();
        looper.join();
        box.loop.discard();
    }
    RunningSupervisor(const RunningSupervisor&) = delete;
    RunningSupervisor& operator=(const RunningSupervisor&) = delete;

    static Settings inFolder(Settings settings, const Corvane::Test::TemporaryDirectory& folder)
    {
        settings.stateFolder = folder.getPath();
        return settings;
    }

    Corvane::Test::TemporaryRuntime runtime;
    Corvane::Test::TemporaryDirectory state;
    Corvane::Test::ChildProcess child{{"sleep", "1000"}};
    Corvane::RPCServer server{"APPtester"};
    Box box;
    FocusControl focus{box};
    WindowService windows{box};
    Supervisor supervisor{box, focus, windows};
    std::thread looper{[this] { box.loop.run(); }};
};

} // namespace Procmand
