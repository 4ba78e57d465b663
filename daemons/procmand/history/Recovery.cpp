#include "history/Recovery.h"

#include "history/EndRecord.h"

#include <corvane/foundation/SerialError.h>

namespace Procmand
{

namespace
{

using Corvane::deserialize;
using Corvane::Deserializer;

/// The windows are the members "0", "1" and so on, for the deserializer knows no arrays.
std::vector<WindowState> readWindows(Deserializer& deserializer)
{
    std::vector<WindowState> windows;
    deserializer.enterMember("windows");
    for (std::size_t i = 0; i < deserializer.getMemberCount(); ++i) {
        const std::string key = std::to_string(i);
        deserializer.enterMember(key);
        windows.push_back(WindowState::read(deserializer));
        deserializer.leaveMember(key);
    }
    deserializer.leaveMember("windows");
    return windows;
}

void take(const std::string& text, Recovery& recovery)
{
    Deserializer deserializer(text);
    const auto kind = deserialize<std::string>("record", deserializer);
    if (kind == "windows") {
        recovery.windows = readWindows(deserializer);
        return;
    }
    const auto uid = deserialize<std::string>("uid", deserializer);
    if (kind == "start") {
        StartRecord start = StartRecord::read(text);
        const bool runs = start.phase == StartRecord::RUNNING;
        recovery.applications[uid] = {.start = std::move(start), .hasEnded = !runs};
        return;
    }
    const auto known = recovery.applications.find(uid);
    if (kind == "end" || kind == "given-up") {
        recovery.past.push_back({.uid = uid, .text = text});
        if (recovery.past.size() > PAST_LIMIT)
            recovery.past.pop_front();
    }
    if (known == recovery.applications.end())
        return;
    if (kind == "end" || kind == "waiting") // the second one was a record of its own once
        known->second.hasEnded = true;
    else if (kind == "gone")
        recovery.applications.erase(known);
}

} // namespace

Recovery Recovery::read(const std::vector<std::string>& records)
{
    Recovery recovery;
    for (const std::string& record : records) {
        try {
            take(record, recovery);
        } catch (const Corvane::SerialError&) {
            // What a write that was interrupted left behind, or a later version's record.
        }
    }
    // Those that had windows to the last: should they have ended since, this is where they were.
    for (auto& [uid, application] : recovery.applications)
        if (auto placement = Placement::find(recovery.windows, uid))
            application.start.placement = std::move(placement);
    return recovery;
}

std::string writeWindowsRecord(const std::vector<WindowState>& windows)
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("record", "windows");
    serializer.beginObject("windows");
    for (std::size_t i = 0; i < windows.size(); ++i) {
        const std::string key = std::to_string(i);
        serializer.beginObject(key);
        windows[i].serialize(serializer);
        serializer.endObject(key);
    }
    serializer.endObject("windows");
    serializer.endObject("");
    return serializer.generate();
}

std::string writeGoneRecord(const std::string& uid)
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("record", "gone");
    serializer.writeString("uid", uid);
    serializer.endObject("");
    return serializer.generate();
}

std::string writeGivenUpRecord(const std::string& uid, const std::string& program, unsigned int restartsInRow)
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("record", "given-up");
    serializer.writeString("time", tellTime());
    serializer.writeString("uid", uid);
    serializer.writeString("program", program);
    serializer.writeUnsigned("restartsInRow", restartsInRow);
    serializer.endObject("");
    return serializer.generate();
}

} // namespace Procmand
