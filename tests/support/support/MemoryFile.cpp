#include "MemoryFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/mman.h>

namespace Corvane::Test
{

int createMemoryFile(const char* name)
{
    const int file = memfd_create(name, MFD_CLOEXEC);
    // The position of such a file has no lock: without this, who writes at the same time overwrites each other.
    if (file < 0 || fcntl(file, F_SETFL, O_APPEND) != 0)
        throw std::runtime_error(std::string("cannot create a file in memory: ") + std::strerror(errno));
    return file;
}

} // namespace Corvane::Test
