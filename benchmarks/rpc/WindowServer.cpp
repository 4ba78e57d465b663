#include "Servers.h"

#include <corvane/Window.h>
#include <corvane/WindowExec.h>
#include <cstdlib>
#include <vector>

namespace Corvane::Benchmark
{

namespace
{

class BenchmarkWindow : public Window
{
public:
    using Window::Window;
    void bringToFront() override {}
    void sendToBack() override {}
    void bringForward() override {}
    void sendBackward() override {}
    std::string getTitle() const override { return "benchmark"; }
};

} // namespace

void runWindowServer()
{
    std::string program = "benchmark";
    std::string type = "--application-type=benchmark";
    std::string token = "--authorization-token=benchmark";
    std::vector<char*> arguments{program.data(), type.data(), token.data(), nullptr};
    WindowExec exec(3, arguments.data());
    BenchmarkWindow window(3, arguments.data());
    exec.run(&window);
    std::exit(1); // it is killed, or something went wrong
}

} // namespace Corvane::Benchmark
