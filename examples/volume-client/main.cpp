// A client of volume-service: sets the volume, and says what it is then.
//
//     volume-client [--service=UID] [--token=NUMBER] LEVEL
//
// With --token it uses a token that somebody has announced for it, as the manager of a box does for the applications
// that it starts. Without, it announces one of its own for the time that it takes, which only succeeds where it may
// connect to the service's control server.
#include <charconv>
#include <corvane/common/RPCClient.h>
#include <corvane/foundation/MapObject.h>
#include <corvane/foundation/Serializer.h>
#include <exception>
#include <iostream>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace
{

struct Words {
    std::string service = "volume";
    std::optional<unsigned int> token;
    unsigned int level = 0;
};

unsigned int readNumber(const std::string& text)
{
    unsigned int number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end)
        throw std::invalid_argument("'" + text + "' is no number from 0 to 4294967295");
    return number;
}

Words readWords(int argc, char** argv)
{
    const std::string service = "--service=";
    const std::string token = "--token=";
    Words words;
    bool hasLevel = false;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word.starts_with(service))
            words.service = word.substr(service.size());
        else if (word.starts_with(token))
            words.token = readNumber(word.substr(token.size()));
        else if (!std::exchange(hasLevel, true))
            words.level = readNumber(word);
        else
            throw std::invalid_argument("'" + word + "' is one word too many");
    }
    if (!hasLevel)
        throw std::invalid_argument("usage: volume-client [--service=UID] [--token=NUMBER] LEVEL");
    return words;
}

/// A token that permits to change the volume, from construction to destruction.
class VolumeToken
{
public:
    explicit VolumeToken(const std::string& service) : control("APP" + service), number(std::random_device()())
    {
        Corvane::MapObject<Corvane::MapObject<int>> attributes;
        attributes.getValues()["volume"].getValues()["change"] = 1;
        Corvane::Serializer parameters;
        parameters.beginObject("");
        Corvane::serialize("token", number, parameters);
        // The attributes travel as a text, not as an object inside the parameters.
        Corvane::serialize("authAttrInternal", attributes.MapBase::serialize(), parameters);
        parameters.endObject("");
        control.call("IService::authorizationTokenCreation", parameters.generate());
    }
    ~VolumeToken()
    {
        try {
            control.call("IService::authorizationTokenDeletion", "{\"token\":" + std::to_string(number) + "}");
        } catch (const std::exception& exception) {
            std::cerr << "volume-client: token " << number << " stays: " << exception.what() << std::endl;
        }
    }
    VolumeToken(const VolumeToken&) = delete;
    VolumeToken& operator=(const VolumeToken&) = delete;

    unsigned int getNumber() const { return number; }

private:
    Corvane::RPCClient control;
    const unsigned int number;
};

void setVolume(const Words& words)
{
    std::optional<VolumeToken> own;
    const unsigned int token = words.token ? *words.token : own.emplace(words.service).getNumber();
    Corvane::Serializer parameters;
    parameters.beginObject("");
    Corvane::serialize("token", token, parameters);
    Corvane::serialize("level", words.level, parameters);
    parameters.endObject("");
    Corvane::RPCClient volume("VOLUME" + words.service);
    volume.call("IVolume::setVolume", parameters.generate());
    std::cout << "volume " << volume.call("IVolume::getVolume") << std::endl;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        setVolume(readWords(argc, argv));
        return 0;
    } catch (const std::exception& exception) {
        std::cerr << "volume-client: " << exception.what() << std::endl;
        return 1;
    }
}
