#include "box/Box.h"

#include <set>

namespace Procmand
{

namespace
{

/// Nothing waits for an application here but the moves of the focus, which are made one after the other.
constexpr unsigned int WORKERS = 8;
/// How often a history that cannot be written is tried again.
constexpr std::chrono::seconds RETRY_INTERVAL{1};

const char* phaseOf(const ManagedApplication& application)
{
    switch (application.phase) {
    case ManagedApplication::Phase::STARTING:
        return application.process ? StartRecord::RUNNING : StartRecord::STARTING;
    case ManagedApplication::Phase::WAITING:
        return StartRecord::WAITING;
    case ManagedApplication::Phase::GIVEN_UP:
        return StartRecord::GIVEN_UP;
    default:
        return StartRecord::RUNNING;
    }
}

} // namespace

Box::Box(Settings settings, Notices::Sink sink)
    : settings(std::move(settings)),
      policy(Policy::load(this->settings.policyFile)),
      folder(this->settings.stateFolder),
      loop(lock),
      notices(std::move(sink)),
      files(this->settings.stateFolder + "/output"),
      history(this->settings.stateFolder + "/history.jsonl"),
      windows(this->settings.windowLimit),
      workers(WORKERS)
{
}

void Box::remember(PastRecord record)
{
    past.push_back(std::move(record));
    if (past.size() > PAST_LIMIT)
        past.pop_front();
    note(past.back().text);
}

void Box::note(const std::string& record)
{
    history.append(record);
    if (historyTimer != 0 || (!history.isWaiting() && !history.isLong()))
        return;
    // Not now: what is being changed must be whole before it is written as it is.
    const auto delay = history.isWaiting() ? RETRY_INTERVAL : std::chrono::milliseconds::zero();
    historyTimer = loop.schedule(delay, [this] { tendHistory(); });
}

void Box::tendHistory()
{
    loop.cancel(historyTimer);
    history.retry();
    if (history.isLong())
        compactHistory();
    if (history.isWaiting() || history.isLong())
        historyTimer = loop.schedule(RETRY_INTERVAL, [this] { tendHistory(); });
}

void Box::dropOutput() const
{
    std::set<std::string> tokens;
    for (const PastRecord& record : past)
        tokens.insert(record.uid);
    for (const auto& [uid, application] : registry.getAll())
        tokens.insert(uid);
    files.keepOnly(tokens);
}

void Box::compactHistory()
{
    // The past first: an end of an application that lives again must not follow the record of its start.
    std::vector<std::string> records;
    for (const PastRecord& record : past)
        records.push_back(record.text);
    for (const auto& [uid, application] : registry.getAll())
        records.push_back(makeStartRecord(application).write());
    records.push_back(writeWindowsRecord(windows.getWindows()));
    history.rewrite(records);
}

StartRecord makeStartRecord(const ManagedApplication& application)
{
    return {.time = tellTime(),
            .boot = readBoot(),
            .uid = application.uid,
            .pid = application.process ? application.process->getPid() : 0,
            .startTime = application.process ? application.process->getStartTime() : std::string(),
            .mark = application.mark,
            .program = application.program,
            .type = application.type,
            .phase = phaseOf(application),
            .restarts = application.restarts,
            .restartsInRow = application.restartsInRow,
            .placement = application.placement,
            .request = application.request};
}

} // namespace Procmand
