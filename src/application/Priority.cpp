#include <corvane/Application.h>

#include <cerrno>
#include <corvane/Foundation.h>
#include <cstring>
#include <sys/resource.h>
#include <unistd.h>

namespace Corvane
{

namespace
{

constexpr char MODULE[] = "Application";
constexpr char COMPONENT[] = "Application";

} // namespace

int Application::getPriority()
{
    // -1 is a nice value like any other: only errno tells it from a failure.
    errno = 0;
    const int priority = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
    if (errno != 0) {
        corvaneDebugPrint(DEBUG_ERROR, MODULE, COMPONENT, __LINE__, "getpriority failed %s", std::strerror(errno));
        throw Exception(RETURN_INVALID_PARAMETER);
    }
    return priority;
}

ReturnCode Application::setPriority(int priority)
{
    constexpr int MOST_FAVOURED = -20;
    constexpr int LEAST_FAVOURED = 19;
    if (priority < MOST_FAVOURED || priority > LEAST_FAVOURED) {
        corvaneDebugPrint(DEBUG_ERROR, MODULE, COMPONENT, __LINE__, "invalid priority");
        throw Exception(RETURN_INVALID_PARAMETER);
    }
    if (setpriority(PRIO_PROCESS, static_cast<id_t>(getpid()), priority) == -1) {
        corvaneDebugPrint(DEBUG_ERROR, MODULE, COMPONENT, __LINE__, "setpriority failed %s", std::strerror(errno));
        throw Exception(RETURN_REFUSED_BY_SYSTEM);
    }
    return RETURN_SUCCESS;
}

} // namespace Corvane
