#include "Measurement.h"

#include "Servers.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <poll.h>
#include <sched.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Corvane::Benchmark
{

Contender::Contender(std::string path, const std::function<void()>& run) : path(std::move(path)), server(fork())
{
    if (server == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        run();
        _exit(1);
    }
    connect();
}

Contender::~Contender()
{
    close(socket);
    kill(server, SIGKILL);
    waitpid(server, nullptr, 0);
}

void Contender::connect()
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    for (int attempt = 0; attempt < 5000; ++attempt) {
        socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
            return;
        close(socket);
        poll(nullptr, 0, 1);
    }
    throw std::runtime_error("no server on " + path);
}

void Contender::call() const
{
    std::array<char, 256> buffer;
    send(socket, REQUEST, sizeof REQUEST - 1, MSG_NOSIGNAL);
    const ssize_t size = recv(socket, buffer.data(), buffer.size(), 0);
    if (size != sizeof ANSWER - 1 || std::memcmp(buffer.data(), ANSWER, sizeof ANSWER - 1) != 0)
        throw std::runtime_error("a wrong answer on " + path);
}

void Contender::measureRound(int calls)
{
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i)
        call();
    const std::chrono::duration<double, std::micro> duration = std::chrono::steady_clock::now() - start;
    rounds.push_back(duration.count() / calls);
}

double Contender::getMedian() const
{
    std::vector<double> sorted = rounds;
    std::sort(sorted.begin(), sorted.end());
    return sorted.at(sorted.size() / 2);
}

long Contender::getResidentSet() const
{
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/" + std::to_string(server) + "/statm") >> total >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

void stayOnOneCore()
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(static_cast<unsigned int>(sched_getcpu()), &cores);
    if (sched_setaffinity(0, sizeof cores, &cores) != 0)
        throw std::runtime_error("cannot stay on one core");
}

} // namespace Corvane::Benchmark
