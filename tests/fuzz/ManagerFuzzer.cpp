#include "Require.h"
#include "server/ManagerServer.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

/// Requests to the process manager: whatever comes is answered, or refused with an error, and the box stays usable.
/// Nothing is launched: the loop that would wait for it does not run, and a box that is ending starts nothing.
namespace
{

using namespace Procmand;

/// A folder for the sockets and the history, which goes with the program.
class Folder
{
public:
    Folder()
    {
        if (mkdtemp(path.data()) == nullptr)
            std::abort();
        setenv("CORVANE_RUNTIME_DIR", path.c_str(), 1);
        setenv("CORVANE_DEBUG_LEVEL", "0", 1);
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string path = "/tmp/corvane-fuzz-XXXXXX";
};

/// Without the methods that take a process by its number: a further call could end whatever has it.
class HarmlessServer : public ManagerServer
{
public:
    HarmlessServer(Box& box, Supervisor& supervisor, FocusControl& focus, WindowService& windows)
        : ManagerServer(box, supervisor, focus, windows)
    {
        interfaces["IApplicationManager"].erase("registerApplication");
        interfaces["IResourceAcquisition"].erase("getResource");
    }
};

/// A process manager with an application that waits and one with a window.
struct FuzzedBox {
    explicit FuzzedBox(const std::string& folder)
        : box(makeSettings(folder), [](const std::string&, const std::string&) {})
    {
        box.isEnding = true;
        box.registry.add("waits").phase = ManagedApplication::Phase::GIVEN_UP;
        box.windows.add("waits", {});
    }
    static Settings makeSettings(const std::string& folder)
    {
        Settings settings;
        settings.stateFolder = folder;
        return settings;
    }

    Box box;
    FocusControl focus{box};
    WindowService windows{box};
    Supervisor supervisor{box, focus, windows};
    HarmlessServer server{box, supervisor, focus, windows};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Folder folder;
    const std::string text(reinterpret_cast<const char*>(data), size);
    FuzzedBox fuzzed(folder.path);
    fuzzed.server.handleRPCSynchronousMethodPayload(text);
    const std::string answer = fuzzed.server.handleRPCSynchronousMethodPayload(
        R"({"jsonrpc":"2.0","id":1,"method":"IApplicationManager::getApplications"})");
    require(answer.find("\"result\":") != answer.npos, "a request leaves the box usable");
    return 0;
}
