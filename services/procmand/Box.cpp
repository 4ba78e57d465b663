#include "Box.h"

namespace Procmand
{

namespace
{

/// A hundred applications may be slow to answer at once; a thread that waits costs little.
constexpr unsigned int WORKER_LIMIT = 128;

} // namespace

Box::Box(Settings settings, Notices::Sink sink)
    : settings(std::move(settings)),
      folder(this->settings.stateFolder),
      loop(lock),
      notices(std::move(sink)),
      files(this->settings.stateFolder + "/output"),
      history(this->settings.stateFolder + "/history.jsonl"),
      windows(this->settings.windowLimit),
      workers(WORKER_LIMIT)
{
}

void Box::rememberEnd(const EndRecord& record)
{
    ends.push_back(record.write());
    if (ends.size() > REMEMBERED_ENDS)
        ends.pop_front();
    history.append(ends.back());
    if (history.isLong())
        compactHistory();
}

void Box::compactHistory()
{
    // The ends first: one of an application that lives again must not follow the record of its start.
    std::vector<std::string> records(ends.begin(), ends.end());
    for (const auto& [uid, application] : registry.getAll()) {
        if (application.phase == ManagedApplication::Phase::STARTING)
            continue; // its record comes when it has started
        records.push_back(makeStartRecord(application).write());
    }
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
            .program = application.program,
            .type = application.type,
            .phase =
                application.phase == ManagedApplication::Phase::WAITING ? StartRecord::WAITING : StartRecord::RUNNING,
            .restarts = application.restarts,
            .restartsInRow = application.restartsInRow,
            .request = application.request};
}

} // namespace Procmand
