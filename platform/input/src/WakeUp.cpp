#include "WakeUp.h"

#include <cerrno>
#include <corvane/Foundation.h>
#include <cstring>
#include <sys/eventfd.h>

namespace Corvane
{

int createWakeUp()
{
    const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor >= 0)
        return descriptor;
    corvaneDebugPrint(DEBUG_ERROR, "MultiInputDriver", "MultiInputDriver", __LINE__, "eventfd failed %s",
                      std::strerror(errno));
    throw Exception(RETURN_REFUSED_BY_SYSTEM);
}

} // namespace Corvane
