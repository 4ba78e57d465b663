#include <corvane/Application.h>
#include <cstdio>

class Consumer : public Corvane::Application
{
public:
    using Application::Application;
};

/// Prints "APP<uid> is <state>".
int main(int argc, char** argv)
{
    Consumer application(argc, argv);
    application.init();
    std::printf("APP%s is %s\n", application.getUid().c_str(), application.getState().c_str());
}
