#include "Evdev.h"

#include <cerrno>
#include <dlfcn.h>
#include <system_error>

namespace Corvane
{

void* findInEvdev(const char* name)
{
    // By the name of its binary interface, as a linked library is.
    static void* const library = dlopen("libevdev.so.2", RTLD_NOW | RTLD_LOCAL);
    void* const function = library != nullptr ? dlsym(library, name) : nullptr;
    if (function == nullptr) {
        const char* const reason = dlerror();
        throw std::system_error(ELIBACC, std::generic_category(), reason != nullptr ? reason : "libevdev.so.2");
    }
    return function;
}

} // namespace Corvane
