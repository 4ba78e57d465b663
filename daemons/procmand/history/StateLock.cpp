#include "history/StateLock.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <sys/file.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace Procmand
{

namespace
{

/// A process that another process manager made has what that one had open, until it is on its own: for a moment, which
/// may be longer than its maker lives.
constexpr std::chrono::seconds PATIENCE{2};
constexpr std::chrono::milliseconds PAUSE{10};

/// @return whether the lock was taken; errno tells why not
bool takeLock(int file)
{
    const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
    while (flock(file, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(PAUSE);
    }
    return true;
}

/// @return what the holder of the lock has written about itself
std::string readHolder(int file)
{
    char text[16];
    const ssize_t size = pread(file, text, sizeof text, 0);
    return size > 0 ? "process " + std::string(text, static_cast<std::size_t>(size)) : "another process";
}

} // namespace

StateLock::StateLock(const std::string& folder)
{
    std::filesystem::create_directories(folder);
    const std::string path = folder + "/lock";
    file.reset(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!file.isOpen())
        throw std::system_error(errno, std::generic_category(), "cannot open " + path);
    if (!takeLock(file.get())) {
        if (errno == EWOULDBLOCK)
            throw std::runtime_error("the state folder " + folder + " is in use by " + readHolder(file.get()));
        throw std::system_error(errno, std::generic_category(), "cannot lock " + path);
    }
    // The file stays when its lock goes: who removed it could remove that of the next holder.
    const std::string pid = std::to_string(getpid());
    if (ftruncate(file.get(), 0) != 0 ||
        pwrite(file.get(), pid.data(), pid.size(), 0) != static_cast<ssize_t>(pid.size()))
        throw std::system_error(errno, std::generic_category(), "cannot write " + path);
}

} // namespace Procmand
