#include "CursorFile.h"

#include <atomic>
#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>

namespace Corvane::Test
{

namespace
{

std::string standInPath;
std::atomic<int> opened;

} // namespace

CursorFile::CursorFile(const std::string& standIn)
{
    standInPath = standIn;
    opened = 0;
}

CursorFile::~CursorFile()
{
    standInPath.clear();
}

int CursorFile::getOpened() const
{
    return opened;
}

} // namespace Corvane::Test

/// A definition in the program wins over the C library's, for every library of the process.
extern "C" __attribute__((visibility("default"))) int open(const char* path, int flags, ...)
{
    using namespace Corvane::Test;

    mode_t mode = 0;
    if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    using Open = int (*)(const char*, int, ...);
    static const auto systemOpen = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "open"));
    if (standInPath.empty() || std::strcmp(path, "/usr/local/etc/cursor.png") != 0)
        return systemOpen(path, flags, mode);
    ++opened;
    return systemOpen(standInPath.c_str(), flags, mode);
}
