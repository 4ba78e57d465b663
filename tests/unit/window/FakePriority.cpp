#include "FakePriority.h"

#include "Journal.h"
#include <cerrno>
#include <corvane/foundation/Export.h>
#include <sys/resource.h>

using Corvane::Test::journal;
using Corvane::Test::priority;

// A definition in the program comes before the one of the C library, for the libraries under test as well.
extern "C" CORVANE_EXPORT int setpriority(__priority_which_t, id_t, int value) noexcept
{
    journal.add("setpriority(" + std::to_string(value) + ")");
    if (priority.failure != 0) {
        errno = priority.failure;
        return -1;
    }
    priority.value = value;
    return 0;
}

extern "C" CORVANE_EXPORT int getpriority(__priority_which_t, id_t) noexcept
{
    return priority.value;
}
