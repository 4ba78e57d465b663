// A window of the box that does what a test wants, told by its application parameters:
//     hold-init=FILE   says "holding" and does not initialise the window before FILE is there
//     exit=N           ends with exit code N as soon as it runs
//     deaf             does not terminate when it is asked to
//     fading           becomes transparent before it terminates
//     quiet            never proves that it is alive
//     flooding         proves it without a pause
//     lingering        runs on in the states that end others
// It proves that it is alive much more often than applications do, so that tests need not wait for its silence.
#include <corvane/TekloWindow.h>
#include <corvane/WindowExec.h>
#include <corvane/common/TaskDelay.h>
#include <corvane/foundation/Exception.h>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <unistd.h>

namespace
{

class Victim : public Corvane::TekloWindow
{
public:
    using TekloWindow::TekloWindow;

    std::string getTitle() const override { return "Victim"; }

    void init() override
    {
        if (const std::string file = find("hold-init="); !file.empty()) {
            std::cout << "holding" << std::endl;
            while (access(file.c_str(), F_OK) != 0)
                Corvane::OS_TaskDelayMsec(5);
        }
        TekloWindow::init();
        std::cerr << "surface " << getClientId() << std::endl;
        // A quiet one may count as run away before it runs, and is to stay that.
        if (getState() != STATE_RUNAWAY)
            setState(STATE_RUNNING);
    }

    void run() override
    {
        if (const std::string code = find("exit="); !code.empty())
            _exit(std::atoi(code.c_str()));
        while (has("lingering") || (getState() != STATE_TERMINATED && getState() != STATE_RUNAWAY)) {
            if (!has("quiet"))
                onKeepAlive(getUid(), getState());
            if (!has("flooding"))
                Corvane::OS_TaskDelayMsec(20);
        }
    }

    void terminate() override
    {
        if (has("fading"))
            setOpacity(0);
        if (!has("deaf"))
            setState(STATE_TERMINATED);
    }

private:
    /// What follows `name` in the word of the parameters that begins with it.
    std::string find(const std::string& name) const
    {
        std::istringstream words(getLaunchParameters().getApplicationParameters());
        for (std::string word; words >> word;)
            if (word.starts_with(name))
                return word.substr(name.size());
        return {};
    }
    bool has(const std::string& word) const
    {
        return getLaunchParameters().getApplicationParameters().find(word) != std::string::npos;
    }
};

} // namespace

int main(int argc, char** argv)
{
    try {
        Corvane::WindowExec exec(argc, argv);
        Victim victim(argc, argv);
        exec.run(&victim);
        return 0;
    } catch (const Corvane::Exception& exception) {
        std::cerr << "victim: " << exception.what() << std::endl;
        return static_cast<int>(exception.getCode());
    } catch (const std::exception& exception) {
        std::cerr << "victim: " << exception.what() << std::endl;
        return 100;
    }
}
