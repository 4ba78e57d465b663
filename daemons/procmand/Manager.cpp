#include "Manager.h"

#include "box/ServerSocket.h"
#include "launch/Launcher.h"

#include <corvane/common/RPCClient.h>
#include <corvane/foundation/DebugPrint.h>
#include <csignal>
#include <cstring>
#include <sys/signalfd.h>

namespace Procmand
{

namespace
{

/// How often it is looked whether everything that is to end has ended.
constexpr std::chrono::milliseconds END_INTERVAL{50};

Corvane::FileDescriptor openSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return Corvane::FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

std::string folderOf(const std::string& path)
{
    return path.substr(0, path.rfind('/'));
}

} // namespace

Manager::Manager(const Settings& settings)
    : box(settings,
          [this](const std::string& name, const std::string& payload) { server.handleRPCNotification(name, payload); }),
      focus(box),
      windows(box),
      supervisor(box, focus, windows),
      server(box, supervisor, focus, windows),
      signals(openSignals())
{
}

void Manager::run()
{
    {
        // Calls that come early wait until the box is as it was.
        std::lock_guard guard(box.lock);
        server.init();
        box.compositor = makeCompositor(box.settings.compositor);
        raiseNiceLimit();
        supervisor.start(folderOf(server.getFixedRPCAddress()));
        takeUpTheBox();
        box.loop.watch(signals.get(), [this] { onSignal(); });
        feedWatchdog();
    }
    serviceManager.tell("READY=1");
    box.workers.run([this] { findServers(); });
    box.loop.run();
    end();
}

void Manager::end()
{
    // In this order: nobody calls any more, no application is listened to any more, no job is at work any more, and no
    // link is left that was still being made.
    server.shutdown();
    {
        std::lock_guard guard(box.lock);
        windows.flush();
        box.tendHistory();
        supervisor.disconnectAll();
    }
    box.workers.finish();
    box.loop.discard();
}

void Manager::takeUpTheBox()
{
    const Recovery recovery = Recovery::read(box.history.read());
    box.past = recovery.past;
    for (const auto& [uid, application] : recovery.applications)
        supervisor.recover(application);
    windows.restore(recovery.windows);
    box.dropOutput();
    box.compactHistory();
}

void Manager::findServers()
{
    for (const std::string& name : Corvane::RPCClient::listServers()) {
        if (!name.starts_with("APP"))
            continue;
        if (auto process = findServer(name))
            box.loop.post([this, uid = name.substr(3), process = std::make_shared<Process>(std::move(*process))] {
                if (box.registry.find(uid) == nullptr && !process->hasEnded())
                    supervisor.adopt(uid, std::move(*process));
            });
    }
}

void Manager::feedWatchdog()
{
    const auto interval = serviceManager.getWatchdogInterval();
    if (!interval)
        return;
    serviceManager.tell("WATCHDOG=1");
    box.loop.schedule(*interval, [this] { feedWatchdog(); });
}

void Manager::onSignal()
{
    signalfd_siginfo info{};
    if (read(signals.get(), &info, sizeof info) != sizeof info)
        return;
    if (box.isEnding) // somebody is in a hurry
        return box.loop.stop();
    Corvane::corvaneDebugPrint(Corvane::DEBUG_NOTICE, "procmand", "Manager", __LINE__, "ending: %s\n",
                               strsignal(static_cast<int>(info.ssi_signo)));
    serviceManager.tell("STOPPING=1");
    box.isEnding = true;
    checkEnd();
}

void Manager::checkEnd()
{
    const bool isStopping = box.settings.stopsApplications && supervisor.stopAll();
    if (!isStopping && !supervisor.isStarting())
        return box.loop.stop();
    box.loop.schedule(END_INTERVAL, [this] { checkEnd(); });
}

} // namespace Procmand
