#include <corvane/common/ActiveObject.h>

#include "SignalMask.h"

#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Exception.h>
#include <cstring>

namespace Corvane
{

namespace
{

constexpr char MODULE[] = "ActiveObject";
constexpr char COMPONENT[] = "ActiveObject";

} // namespace

ActiveObject::ActiveObject(const char* name) : name(name) {}

ActiveObject::~ActiveObject()
{
    stop();
}

void ActiveObject::init()
{
    if (running)
        return;
    stop();
    stopRequested = false;
    running = true;
    started = true;
    // Blocked before the thread exists: it inherits the mask, so no signal slips in before its first statement.
    const SignalMask mask(SIG_BLOCK, SignalMask::asynchronousSignals());
    const int error = pthread_create(&handle, nullptr, &ActiveObject::run, this);
    if (error == 0)
        return;
    running = false;
    started = false;
    corvaneDebugPrint(DEBUG_ERROR, MODULE, COMPONENT, __LINE__, "cannot start thread %s: %s\n", name,
                      std::strerror(error));
    throw Exception(RETURN_REFUSED_BY_SYSTEM);
}

void ActiveObject::exit()
{
    stop();
}

bool ActiveObject::isStopRequested() const
{
    return stopRequested;
}

void* ActiveObject::run(void* self)
{
    constexpr std::size_t NAME_LIMIT = 15;
    auto* object = static_cast<ActiveObject*>(self);
    char shortName[NAME_LIMIT + 1]{};
    std::strncpy(shortName, object->name, NAME_LIMIT);
    pthread_setname_np(pthread_self(), shortName);
    object->thread();
    object->running = false;
    return nullptr;
}

void ActiveObject::stop()
{
    stopRequested = true;
    if (!started || pthread_equal(pthread_self(), handle))
        return;
    pthread_join(handle, nullptr);
    started = false;
}

} // namespace Corvane
