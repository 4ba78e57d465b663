#include "Require.h"
#include "launch/LaunchRequest.h"

#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/Exception.h>
#include <corvane/foundation/SerialError.h>
#include <corvane/interfaces/IApplicationManager.h>
#include <corvane/interfaces/IWindowManager.h>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// What starts an application: the request that the process manager reads, and the launch parameters that the
/// application finds in its environment and on its command line. Each text is read or refused; every other exception
/// ends the program, and so is found.
namespace
{

using namespace Corvane;
using Procmand::LaunchRequest;

template <class Parameters>
void checkParameters(std::vector<std::string> words)
{
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    try {
        Parameters parameters(static_cast<int>(pointers.size()), pointers.data());
    } catch (const Exception&) {
        // A bad value of an option that is known.
    }
}

/// A line is a word of the command line.
std::vector<std::string> split(const std::string& text)
{
    std::vector<std::string> words{"program"};
    std::size_t begin = 0;
    for (std::size_t end = 0; words.size() < 64 && (end = text.find('\n', begin)) != text.npos; begin = end + 1)
        words.push_back(text.substr(begin, end - begin));
    words.push_back(text.substr(begin));
    return words;
}

/// The launch parameters as the environment has them.
template <class Parameters>
void checkVariable(const std::string& text)
{
    try {
        Deserializer deserializer(text);
        Parameters parameters(deserializer);
    } catch (const SerialError& error) {
        require(error.what()[0] != '\0', "an error says what was wrong");
    }
}

void checkRequest(const std::string& text)
{
    try {
        const LaunchRequest request = LaunchRequest::read(text);
        const std::string written = request.write();
        require(LaunchRequest::read(written).write() == written, "a request that was written reads the same");
        Deserializer deserializer(request.writeParameters("token"));
        const IApplicationManager::LaunchParameters parameters(deserializer);
        require(parameters.getAuthorizationToken() == "token", "an application finds the token that it was given");
    } catch (const SerialError& error) {
        require(error.what()[0] != '\0', "an error says what was wrong");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkRequest(text);
    checkVariable<IApplicationManager::LaunchParameters>(text);
    checkVariable<IWindowManager::LaunchParameters>(text);
    checkParameters<IApplicationManager::LaunchParameters>(split(text));
    checkParameters<IWindowManager::LaunchParameters>(split(text));
    return 0;
}
