#include "history/StartRecord.h"

#include <fstream>

namespace Procmand
{

std::string StartRecord::write() const
{
    Corvane::Serializer serializer;
    serializer.beginObject("");
    serializer.writeString("record", "start");
    serializer.writeString("time", time);
    serializer.writeString("boot", boot);
    serializer.writeString("uid", uid);
    serializer.writeInteger("pid", pid);
    serializer.writeString("startTime", startTime);
    serializer.writeString("mark", mark);
    serializer.writeString("program", program);
    serializer.writeString("applicationType", type);
    serializer.writeString("phase", phase);
    serializer.writeUnsigned("restarts", restarts);
    serializer.writeUnsigned("restartsInRow", restartsInRow);
    if (placement)
        placement->serialize("placement", serializer);
    // As a text of its own: the request is read by its own rules.
    if (request)
        serializer.writeString("request", request->write());
    serializer.endObject("");
    return serializer.generate();
}

StartRecord StartRecord::read(const std::string& text)
{
    using Corvane::deserialize;
    Corvane::Deserializer deserializer(text);
    StartRecord record;
    record.time = deserialize<std::string>("time", deserializer);
    record.boot = deserialize<std::string>("boot", deserializer);
    record.uid = deserialize<std::string>("uid", deserializer);
    record.pid = deserialize<int>("pid", deserializer);
    record.startTime = deserialize<std::string>("startTime", deserializer);
    record.program = deserialize<std::string>("program", deserializer);
    record.restarts = deserialize<unsigned int>("restarts", deserializer);
    // Earlier versions did not write these.
    if (deserializer.hasMember("applicationType"))
        record.type = deserialize<std::string>("applicationType", deserializer);
    if (deserializer.hasMember("mark"))
        record.mark = deserialize<std::string>("mark", deserializer);
    if (deserializer.hasMember("phase"))
        record.phase = deserialize<std::string>("phase", deserializer);
    if (deserializer.hasMember("restartsInRow"))
        record.restartsInRow = deserialize<unsigned int>("restartsInRow", deserializer);
    if (deserializer.hasMember("placement"))
        record.placement = deserialize<Placement>("placement", deserializer);
    if (deserializer.hasMember("request"))
        record.request = LaunchRequest::read(deserialize<std::string>("request", deserializer));
    return record;
}

std::string readBoot()
{
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string boot;
    std::getline(file, boot);
    return boot;
}

} // namespace Procmand
