#include "Servers.h"

#include <cstdlib>

namespace Corvane::Benchmark
{

Server startBareServer(const RuntimeFolder& folder)
{
    const std::string path = folder.getPath() + "/bare";
    return {path, Process([&path] { runBareServer(path); })};
}

Server startStrictServer(const RuntimeFolder& folder)
{
    const std::string path = folder.getPath() + "/strict";
    return {path, Process([&path] { runStrictServer(path); })};
}

Server startWindowServer(int listeners)
{
    return {findWindowSocket(), Process(describeWindowServer(listeners))};
}

std::vector<std::string> describeWindowServer(int listeners)
{
    return {WINDOW_SERVER, std::to_string(listeners), "--application-type=benchmark",
            "--authorization-token=benchmark"};
}

std::string findWindowSocket()
{
    return std::string(std::getenv("CORVANE_RUNTIME_DIR")) + "/APPbenchmark.sock";
}

} // namespace Corvane::Benchmark
