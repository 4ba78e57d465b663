// An application without a window: it lives, proves it every five seconds, and ends by itself.
//
// It has no control server of its own: that comes with a window (hello-window) or with a service. Whoever wants to know
// how it is listens inside the process, as Reporter does here.
//
//     plain-application [--keep-alives=N]
#include <corvane/Application.h>
#include <corvane/foundation/Exception.h>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace
{

/// Prints what happens to the application and ends it after a number of keep-alives.
class Reporter : public virtual Corvane::IApplication::IApplicationListener
{
public:
    Reporter(Corvane::Application& application, unsigned int keepAlives)
        : application(application), keepAlivesLeft(keepAlives)
    {
    }

    void onKeepAlive(const std::string& uid, const std::string& state) override
    {
        std::cout << uid << " is alive, " << state << std::endl;
        if (keepAlivesLeft > 0 && --keepAlivesLeft == 0)
            application.terminate();
    }

    void onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState) override
    {
        std::cout << uid << " went from " << oldState << " to " << newState << std::endl;
        // Nothing to clean up here, so the request is fulfilled at once. run() notices it within five seconds.
        if (newState == Corvane::ILifecycleManagement::STATE_TERMINATING)
            application.setState(Corvane::ILifecycleManagement::STATE_TERMINATED);
    }

private:
    Corvane::Application& application;
    unsigned int keepAlivesLeft; ///< 0: it goes on for ever
};

/// The library reads its own options and leaves all others to the application.
unsigned int findKeepAlives(int argc, char** argv)
{
    const std::string option = "--keep-alives=";
    unsigned int keepAlives = 3;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word.starts_with(option) && !(std::istringstream(word.substr(option.size())) >> keepAlives))
            throw std::invalid_argument("--keep-alives needs a number");
    }
    return keepAlives;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        Corvane::Application application(argc, argv);
        Reporter reporter(application, findKeepAlives(argc, argv));
        application.addListener(&reporter);
        application.init();
        application.setState(Corvane::ILifecycleManagement::STATE_RUNNING);
        application.run();
        application.removeListener(&reporter);
        return 0;
    } catch (const Corvane::Exception& exception) {
        std::cerr << "plain-application: " << exception.what() << std::endl;
    } catch (const std::exception& exception) {
        std::cerr << "plain-application: " << exception.what() << std::endl;
    }
    return 1;
}
