#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Export.h>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

// What the debug print does with its environment variables, which are read once, when the library is loaded: hence a
// program of its own. It prints one line of every level.

/// The system's log daemon, played by a socket of the test.
extern "C" CORVANE_EXPORT int connect(int socket, const sockaddr* address, socklen_t length)
{
    sockaddr_un substitute{};
    const char* const path = std::getenv("TEST_LOG_DAEMON");
    if (path != nullptr && std::strcmp(reinterpret_cast<const sockaddr_un*>(address)->sun_path, "/dev/log") == 0) {
        substitute.sun_family = AF_UNIX;
        std::strncpy(substitute.sun_path, path, sizeof substitute.sun_path - 1);
        address = reinterpret_cast<const sockaddr*>(&substitute);
        length = sizeof substitute;
    }
    return static_cast<int>(syscall(SYS_connect, socket, address, length));
}

#ifdef TEST_EARLY_PRINT
namespace
{

void printBeforeAnythingIsInitialised()
{
    Corvane::corvaneDebugPrint(Corvane::DEBUG_NOTICE, "Early", "child", 0, "before the library's initialisation");
}

__attribute__((used, section(".preinit_array"))) void (*const EARLY)() = printBeforeAnythingIsInitialised;

} // namespace
#endif

int main()
{
    for (int level = 1; level <= 9; ++level)
        Corvane::corvaneDebugPrint(static_cast<Corvane::DebugLevel>(level), "Module", "child", level, "level %d\n",
                                   level);
}
