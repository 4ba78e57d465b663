#include "CommandLine.h"
#include "Manager.h"

#include <corvane/foundation/DebugPrint.h>
#include <csignal>
#include <exception>

int main(int argc, char** argv)
{
    int exitCode = 0;
    const auto settings = Procmand::readCommandLine(argc, argv, exitCode);
    if (!settings)
        return exitCode;
    // In every thread: the process manager takes these two itself.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // A file that may not grow any further is an error of the write, and not the end.
    std::signal(SIGXFSZ, SIG_IGN);
    Corvane::debugInitialize("procmand");
    try {
        Procmand::Manager(*settings).run();
        return 0;
    } catch (const std::exception& error) {
        Corvane::corvaneDebugPrint(Corvane::DEBUG_ERROR, "procmand", "main", __LINE__, "%s\n", error.what());
        return 1;
    }
}
