#pragma once

#include <atomic>
#include <libevdev/libevdev.h>

namespace Corvane
{

/// Finds a function of libevdev, which the first call loads for good. Thread-safe.
/// @throws std::system_error  with ELIBACC when the library is not there or lacks the function
void* findInEvdev(const char* name);

template <class Signature>
class EvdevFunction;

/// A function of libevdev that is called by its own name and found with the first call. Thread-safe.
///
/// The library is not linked: most windows never open a device, and its tables of names would cost each start the
/// relocation and each process the memory.
template <class Result, class... Arguments>
class EvdevFunction<Result(Arguments...)>
{
public:
    constexpr explicit EvdevFunction(const char* name) : name(name) {}

    Result operator()(Arguments... arguments) const
    {
        Function* found = function.load(std::memory_order_acquire);
        if (found == nullptr) {
            found = reinterpret_cast<Function*>(findInEvdev(name));
            function.store(found, std::memory_order_release);
        }
        return found(arguments...);
    }

private:
    using Function = Result(Arguments...);

    const char* const name;
    mutable std::atomic<Function*> function{nullptr};
};

inline constinit const EvdevFunction<decltype(::libevdev_free)> libevdev_free{"libevdev_free"};
inline constinit const EvdevFunction<decltype(::libevdev_get_abs_maximum)> libevdev_get_abs_maximum{
    "libevdev_get_abs_maximum"};
inline constinit const EvdevFunction<decltype(::libevdev_get_abs_minimum)> libevdev_get_abs_minimum{
    "libevdev_get_abs_minimum"};
inline constinit const EvdevFunction<decltype(::libevdev_get_event_value)> libevdev_get_event_value{
    "libevdev_get_event_value"};
inline constinit const EvdevFunction<decltype(::libevdev_has_event_code)> libevdev_has_event_code{
    "libevdev_has_event_code"};
inline constinit const EvdevFunction<decltype(::libevdev_has_event_type)> libevdev_has_event_type{
    "libevdev_has_event_type"};
inline constinit const EvdevFunction<decltype(::libevdev_has_property)> libevdev_has_property{"libevdev_has_property"};
inline constinit const EvdevFunction<decltype(::libevdev_new_from_fd)> libevdev_new_from_fd{"libevdev_new_from_fd"};
inline constinit const EvdevFunction<decltype(::libevdev_next_event)> libevdev_next_event{"libevdev_next_event"};

} // namespace Corvane
