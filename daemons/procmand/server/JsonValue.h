#pragma once

#include <corvane/foundation/SerialObject.h>
#include <string>

namespace Procmand
{

/// A result that is JSON text already.
class JsonValue : public Corvane::SerialObject
{
public:
    explicit JsonValue(std::string json) : json(std::move(json)) {}

    std::string getObjectType() const override { return "JsonValue"; }
    std::unique_ptr<SerialObject> clone() const override { return std::make_unique<JsonValue>(*this); }
    void serialize(Corvane::Serializer& serializer) const override { serializer.writeJson("", json); }
    std::string serialize() const override { return json; }
    using SerialObject::serialize;
    void serialize(const std::string& key, Corvane::Serializer& serializer) const override
    {
        serializer.writeJson(key, json);
    }

private:
    std::string json;
};

} // namespace Procmand
