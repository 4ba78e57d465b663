#include "history/EndRecord.h"

#include <corvane/foundation/Serializer.h>
#include <ctime>

namespace Procmand
{

namespace
{

void writeNumber(const char* key, const std::optional<int>& number, Corvane::Serializer& serializer)
{
    if (number)
        serializer.writeInteger(key, *number);
    else
        serializer.writeNull(key);
}

} // namespace

std::string EndRecord::write() const
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("record", "end");
    serializer.writeString("time", time);
    serializer.writeString("uid", uid);
    serializer.writeInteger("pid", pid);
    serializer.writeString("program", program);
    serializer.writeString("name", name);
    writeNumber("exitCode", end.exitCode, serializer);
    writeNumber("signal", end.signal, serializer);
    serializer.writeString("state", state);
    serializer.writeString("previousState", previousState);
    serializer.writeBoolean("ranAway", ranAway);
    serializer.writeBoolean("wasStopped", wasStopped);
    serializer.writeUnsigned("restarts", restarts);
    serializer.writeString("standardOutput", standardOutput);
    serializer.writeString("standardError", standardError);
    serializer.endObject("");
    return serializer.generate();
}

std::string tellTime()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    gmtime_r(&now.tv_sec, &parts);
    char text[32];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    return std::string(text, length) + "." + std::to_string(1000 + now.tv_nsec / 1000000).substr(1) + "Z";
}

} // namespace Procmand
