#pragma once

#include <corvane/foundation/Deserializer.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace Corvane::Test
{

/// Notes which operations are called, in which order.
class RecordingDeserializer : public Deserializer
{
public:
    using Deserializer::Deserializer;

    void enterMember(const std::string& key) override
    {
        calls.push_back("enter " + key);
        Deserializer::enterMember(key);
    }
    void leaveMember(const std::string& key) override
    {
        calls.push_back("leave " + key);
        if (failsToLeave)
            throw std::runtime_error("cannot leave");
        Deserializer::leaveMember(key);
    }
    std::vector<std::string> getMemberNames() override
    {
        calls.push_back("names");
        return Deserializer::getMemberNames();
    }
    std::size_t getMemberCount() override
    {
        calls.push_back("count");
        return Deserializer::getMemberCount();
    }
    void beginMember(std::size_t index) override
    {
        calls.push_back("begin " + std::to_string(index));
        Deserializer::beginMember(index);
    }
    void endMember(std::size_t index) override
    {
        calls.push_back("end " + std::to_string(index));
        Deserializer::endMember(index);
    }

    std::vector<std::string> calls;
    bool failsToLeave = false;
};

} // namespace Corvane::Test
