#include "access/Audit.h"

#include "history/EndRecord.h"

#include <algorithm>
#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Serializer.h>
#include <iterator>
#include <vector>

namespace Procmand
{

namespace
{

using Corvane::corvaneDebugPrint;

/// What a caller says goes into a record as far as it tells something.
constexpr std::size_t TEXT_LIMIT = 256;

std::string cut(std::string text)
{
    if (text.size() > TEXT_LIMIT)
        text.resize(TEXT_LIMIT);
    return text;
}

std::string writeRecord(const Caller& caller, const Audit::Deed& deed)
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("time", tellTime());
    serializer.writeInteger("pid", caller.getPid());
    serializer.writeUnsigned("user", caller.getUser());
    serializer.writeString("program", cut(caller.findProgram()));
    serializer.writeString("method", cut(deed.method));
    serializer.writeString("subject", cut(deed.subject));
    serializer.writeString("outcome", deed.problem.empty() ? "accepted" : deed.isRefused ? "refused" : "failed");
    if (!deed.problem.empty())
        serializer.writeString("problem", cut(deed.problem));
    serializer.endObject("");
    return serializer.generate();
}

} // namespace

void Audit::note(const Caller& caller, const Deed& deed)
{
    std::deque<Record>& records = deed.isRefused ? refusals : deeds;
    records.push_back({++lastNumber, writeRecord(caller, deed)});
    if (records.size() > LIMIT)
        records.pop_front();
    if (deed.isRefused)
        logRefusal(records.back().text);
    else
        corvaneDebugPrint(Corvane::DEBUG_NOTICE, "procmand", "Audit", __LINE__, "audit %s\n",
                          records.back().text.c_str());
}

void Audit::logRefusal(const std::string& text)
{
    const Clock::time_point now = Clock::now();
    if (now - second >= std::chrono::seconds(1)) {
        if (silentRefusals > 0)
            corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "Audit", __LINE__, "%u more refusals are not here\n",
                              silentRefusals);
        second = now;
        loggedRefusals = 0;
        silentRefusals = 0;
    }
    if (loggedRefusals == REFUSALS_A_SECOND) {
        ++silentRefusals;
        return;
    }
    ++loggedRefusals;
    corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "Audit", __LINE__, "audit %s\n", text.c_str());
}

std::string Audit::write(std::size_t limit) const
{
    std::vector<Record> records;
    std::merge(deeds.begin(), deeds.end(), refusals.begin(), refusals.end(), std::back_inserter(records),
               [](const Record& one, const Record& other) { return one.number < other.number; });
    Corvane::Serializer serializer;
    serializer.beginArray("");
    for (std::size_t i = records.size() - std::min(limit, records.size()); i < records.size(); ++i)
        serializer.writeJson("", records[i].text);
    serializer.endArray("");
    return serializer.generate();
}

} // namespace Procmand
