#pragma once

#include <string>
#include <support/ChildProcess.h>
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
        return environment;
    }
};

} // namespace Corvane::Test
