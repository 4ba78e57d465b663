#include <corvane/foundation/SerialObject.h>

#include <corvane/foundation/SerialError.h>
#include <json/reader.h>
#include <json/value.h>

// jsoncpp calls its Writer outdated; it is part of this interface all the same.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <json/writer.h>

namespace Corvane
{

namespace
{

Json::Value readValue(const std::string& text)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    // Strict mode wants an object or an array, each name once; a serial object may be a simple value, and a payload
    // stands as its sender wrote it.
    builder["strictRoot"] = false;
    builder["rejectDupKeys"] = false;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    std::string problem;
    if (!reader->parse(text.data(), text.data() + text.size(), &value, &problem))
        throw SerialError("not valid JSON: " + problem);
    return value;
}

} // namespace

std::string SerialObject::serialize() const
{
    Serializer serializer;
    serialize(std::string(), serializer);
    return serializer.generate();
}

std::string SerialObject::serialize(Json::Writer& writer) const
{
    return writer.write(readValue(serialize()));
}

void SerialObject::serialize(const std::string& key, Serializer& serializer) const
{
    serializer.beginObject(key);
    serialize(serializer);
    serializer.endObject(key);
}

SerialObject::~SerialObject() = default;

} // namespace Corvane

#pragma GCC diagnostic pop
