#pragma once

#include <atomic>
#include <corvane/foundation/Export.h>
#include <corvane/foundation/Mutex.h>
#include <cstddef>
#include <mutex>
#include <new>

namespace Corvane
{

/// Guards the creation and the destruction of every Singleton's instance: one for all of them.
CORVANE_EXPORT inline Mutex singletonMutex("Singleton", 0);

/// Base of a class with one shared, reference-counted instance per process.
///
/// `getInstance<Derived>()` takes a reference, `delete pointer` gives one back; the last `delete` destroys the
/// instance. A pointer that is not the instance is left alone: neither destroyed nor freed.
///
/// A class that uses it declares `extern template class Singleton<T>` in its header and instantiates it in its source
/// file, so that all libraries of a process share one instance. Taking a reference is thread-safe. Giving one back is
/// thread-safe towards creation; two threads that give back at once must be ordered by their callers.
///
/// Constructor and destructor run with singletonMutex held. A thread that one of them waits for must not take a
/// reference on any Singleton, nor give a last one back: the two would wait for each other for ever.
///
///     auto* driver = Singleton<InputDriver>::getInstance<MultiInputDriver>();
///     delete driver;
template <class T>
class CORVANE_EXPORT Singleton
{
public:
    Singleton(const Singleton&) = delete;
    Singleton& operator=(const Singleton&) = delete;

    /// Takes a reference on the instance; the call that finds none creates a `Derived`.
    /// @return the instance; never null. Every caller in a process must name the same `Derived` or a base of it.
    /// @throws whatever the constructor throws; the count is then unchanged.
    template <class Derived>
    static Derived* getInstance();

    /// Out of line, or g++ pairs the `operator new` inside with the `operator delete` below and warns of a mismatch.
    [[gnu::noinline]] static void* operator new(std::size_t size) { return ::operator new(size); }

    /// Releases the reference that a `delete` expression gives back; runs before, and instead of, the destructor.
    static void operator delete(Singleton* object, std::destroying_delete_t);

    /// The same rule for bare storage: storage of a constructor that threw is not the instance and so is left alone.
    static void operator delete(void* object);

protected:
    Singleton() = default;
    virtual ~Singleton() = default;

    static std::atomic<T*> instance;
    static std::atomic<unsigned int> references;

private:
    static void release();
};

template <class T>
std::atomic<T*> Singleton<T>::instance = nullptr;

template <class T>
std::atomic<unsigned int> Singleton<T>::references = 0;

template <class T>
template <class Derived>
Derived* Singleton<T>::getInstance()
{
    std::lock_guard<Mutex> guard(singletonMutex);
    if (instance == nullptr)
        instance = new Derived;
    ++references;
    return static_cast<Derived*>(instance.load());
}

template <class T>
void Singleton<T>::operator delete(Singleton* object, std::destroying_delete_t)
{
    T* const current = instance;
    if (current != nullptr && object == static_cast<Singleton*>(current))
        release();
}

template <class T>
void Singleton<T>::operator delete(void* object)
{
    T* const current = instance;
    if (current != nullptr && object == dynamic_cast<void*>(current))
        release();
}

template <class T>
void Singleton<T>::release()
{
    // Deliberate: the count goes down outside the mutex; only the destruction is under it.
    if (--references != 0)
        return;
    std::lock_guard<Mutex> guard(singletonMutex);
    T* const current = instance;
    // A reference that was taken between the two steps keeps the instance.
    if (current == nullptr || references != 0)
        return;
    void* storage = dynamic_cast<void*>(current);
    current->~T();
    ::operator delete(storage);
    instance = nullptr;
}

} // namespace Corvane
