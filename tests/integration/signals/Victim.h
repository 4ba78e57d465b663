#pragma once

#include <string>
#include <support/ChildProcess.h>
#include <support/TemporaryDirectory.h>
#include <vector>

namespace Corvane::Test
{

/// The program that does what its words say, see SignalVictim.cpp.
class Victim : public ChildProcess
{
public:
    explicit Victim(const std::vector<std::string>& words) : ChildProcess(makeCommand(words), makeEnvironment()) {}

private:
    static std::vector<std::string> makeCommand(std::vector<std::string> words)
    {
        words.insert(words.begin(), SIGNAL_VICTIM);
        return words;
    }
    static Environment makeEnvironment()
    {
        Environment environment = leavingSignalsToTheProgram();
        for (const char* name : {"CORVANE_APP_PARAMETERS", "CORVANE_DEBUG_LEVEL", "CORVANE_DEBUG_OUTPUT"})
            environment[name] = {};
        // A process manager of this machine is not to hear of the victims.
        static const TemporaryDirectory runtime;
        environment["CORVANE_RUNTIME_DIR"] = runtime.getPath();
        return environment;
    }
};

} // namespace Corvane::Test
