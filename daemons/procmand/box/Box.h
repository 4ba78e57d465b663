#pragma once

#include "access/Audit.h"
#include "access/Policy.h"
#include "access/Quotas.h"
#include "box/EventLoop.h"
#include "box/ManagedApplication.h"
#include "box/Notices.h"
#include "box/Settings.h"
#include "box/Workers.h"
#include "history/History.h"
#include "history/Recovery.h"
#include "history/StateLock.h"
#include "launch/OutputFiles.h"
#include "screen/Compositor.h"
#include "screen/WindowStack.h"

#include <mutex>

namespace Procmand
{

/// The state of the box and what everything in the process manager works with.
///
/// `lock` guards all of it. Tasks of the loop and the handlers of remote calls hold it; neither ever waits, so it is
/// held for moments only. What has to wait is a job of the workers, which post what came of it; a job takes the lock
/// only for a note that must be written before it goes on.
struct Box {
    /// @throws std::runtime_error  the state folder cannot be used: above all, another process manager has it
    Box(Settings settings, Notices::Sink sink);

    /// Remembers what has happened and writes it into the history.
    void remember(PastRecord record);
    /// Removes what applications printed that neither are known nor have a place in the past.
    void dropOutput() const;
    /// Writes a record into the history, which is written anew soon once it is long.
    void note(const std::string& record);
    /// Writes what could not be written before; and where the history is long, writes it anew.
    void tendHistory();
    /// Writes the history anew, with nothing in it but what matters today.
    void compactHistory();

    const Settings settings;
    const Policy policy;
    const StateLock folder; ///< before anything in it is touched
    std::mutex lock;
    EventLoop loop;
    Notices notices;
    OutputFiles files;
    History history;
    Registry registry;
    WindowStack windows;
    Audit audit;
    Quotas quotas;
    /// In memory until the box is this process manager's: another one may have the screen.
    std::unique_ptr<ICompositor> compositor = makeCompositor("memory");
    std::deque<PastRecord> past; ///< the last ones
    bool isEnding = false;       ///< nothing is started any more
    EventLoop::Timer historyTimer = 0;
    /// Last, so that it goes first: its jobs use the rest.
    Workers workers;
};

/// @return the record of an application and its process
StartRecord makeStartRecord(const ManagedApplication& application);

} // namespace Procmand
