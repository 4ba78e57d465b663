#include "Programs.h"

#include <corvane/common/RPCClient.h>
#include <csignal>
#include <stdexcept>
#include <sys/wait.h>

namespace Corvane::Test
{

Outcome corvanectl(const Words& words)
{
    Words command{CORVANECTL};
    command.insert(command.end(), words.begin(), words.end());
    ChildProcess process(command);
    const ProcessEnd end = process.wait();
    return {end.status.value_or(-1), process.getOutput(), process.getError()};
}

HelloWindow::HelloWindow(const std::string& uid)
    : process({HELLO_WINDOW, "--application-type=demo", "--authorization-token=" + uid}, leavingSignalsToTheProgram())
{
    // Asked by its own name: corvanectl takes a uid for the whole name of another server until this one is there.
    RPCClient client("APP" + uid);
    const auto runs = [&client] {
        try {
            return client.call("IApplication::getState") == "\"RUNNING\"";
        } catch (const RPCError&) {
            return false;
        }
    };
    if (!await(runs))
        throw std::runtime_error("hello-window does not run: " + process.getError());
}

void HelloWindow::stop()
{
    process.sendSignal(SIGSTOP);
    // A thread may run on for a while after the signal was sent; this returns when the last one has stopped.
    siginfo_t info{};
    if (waitid(P_PID, static_cast<id_t>(process.getPid()), &info, WSTOPPED) != 0 || info.si_code != CLD_STOPPED)
        throw std::runtime_error("hello-window does not stop");
}

bool mayLowerNice()
{
    return ChildProcess({"/bin/sh", "-c", "exec nice -n 5 sh -c 'renice -n 0 -p $$'"}).wait().status == 0;
}

} // namespace Corvane::Test
