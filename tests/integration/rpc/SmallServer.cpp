#include "TestServer.h"

#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <unistd.h>

/// A server in a process that may have so many megabytes: `small-server MEGABYTES`. Its description of itself is long.
namespace Corvane::Test
{

namespace
{

class DescribedServer : public TestServer
{
public:
    DescribedServer()
    {
        for (int i = 0; i < 50; ++i)
            interfaces["IMany"]["aMethodOfMany" + std::to_string(i)] = static_cast<Handler>(&TestServer::count);
    }
};

} // namespace

} // namespace Corvane::Test

int main(int argc, char** argv)
{
    const rlim_t bytes = static_cast<rlim_t>(argc > 1 ? std::atoi(argv[1]) : 0) * 1024 * 1024;
    const rlimit limit{.rlim_cur = bytes, .rlim_max = bytes};
    if (setrlimit(RLIMIT_AS, &limit) != 0)
        return EXIT_FAILURE;
    Corvane::Test::DescribedServer server;
    server.init();
    std::puts("ready");
    std::fflush(stdout);
    pause();
    return EXIT_SUCCESS;
}
