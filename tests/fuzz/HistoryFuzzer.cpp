#include "Require.h"
#include "history/Recovery.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The process manager's history may hold anything: each line is taken or left out, and what was taken and written
/// again reads the same. Every exception ends the program, and so is found.
namespace
{

using namespace Procmand;

std::vector<std::string> splitLines(const std::string& text)
{
    std::vector<std::string> lines;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = text.find('\n', begin)) != text.npos; begin = end + 1)
        lines.push_back(text.substr(begin, end - begin));
    lines.push_back(text.substr(begin));
    return lines;
}

/// The history as a process manager that has read it would write it anew.
std::vector<std::string> writeAnew(const Recovery& recovery)
{
    std::vector<std::string> records;
    for (const PastRecord& record : recovery.past)
        records.push_back(record.text);
    for (const auto& [uid, application] : recovery.applications)
        records.push_back(application.start.write());
    records.push_back(writeWindowsRecord(recovery.windows));
    return records;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const Recovery recovery = Recovery::read(splitLines(text));
    require(recovery.past.size() <= PAST_LIMIT, "the past is limited");
    const std::vector<std::string> written = writeAnew(recovery);
    require(writeAnew(Recovery::read(written)) == written, "a history that was written anew reads the same");
    return 0;
}
