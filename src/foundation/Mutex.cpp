#include <corvane/foundation/Mutex.h>

namespace Corvane
{

Mutex::Mutex(const char* name, int recursive) : name(name)
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, recursive != 0 ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_NORMAL);
    pthread_mutex_init(&mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

Mutex::~Mutex()
{
    pthread_mutex_destroy(&mutex);
}

void Mutex::lock()
{
    // The result is not looked at: a mutex of these two kinds refuses only after its destruction. That can happen while
    // a process exits, and then there is nobody left to keep out.
    pthread_mutex_lock(&mutex);
}

bool Mutex::try_lock()
{
    return pthread_mutex_trylock(&mutex) == 0;
}

void Mutex::unlock()
{
    pthread_mutex_unlock(&mutex);
}

const char* Mutex::getName() const
{
    return name;
}

} // namespace Corvane
