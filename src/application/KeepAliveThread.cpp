#include <corvane/Application.h>

#include "Containment.h"

#include <corvane/common/TaskDelay.h>

namespace Corvane
{

namespace
{

void sendKeepAlive(Application& application)
{
    application.onKeepAlive(application.getUid(), application.getState());
}

} // namespace

Application::KeepAliveThread::KeepAliveThread(Application* application)
    : ActiveObject("KeepAliveThread"), application(application)
{
}

Application::KeepAliveThread::~KeepAliveThread()
{
    exit();
}

int Application::KeepAliveThread::thread()
{
    // Ten short delays instead of one of 5 s: a request to stop is noticed within 500 ms.
    constexpr int DELAYS = 10;
    constexpr unsigned int DELAY_MS = 500;
    while (!isStopRequested()) {
        contain(__func__, __LINE__, [this] { sendKeepAlive(*application); });
        for (int i = 0; i < DELAYS && !isStopRequested(); ++i)
            OS_TaskDelayMsec(DELAY_MS);
    }
    return 0;
}

} // namespace Corvane
