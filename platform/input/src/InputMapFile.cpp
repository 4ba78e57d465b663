#include "InputMapFile.h"

#include <array>
#include <cerrno>
#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/SerialError.h>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "MultiInputDriver";
constexpr const char* COMPONENT = "InputMap";
/// How long a file may be, in bytes: far more than anybody writes.
constexpr off_t LIMIT = 1 << 20;

void tell(const std::string& path, const char* problem)
{
    corvaneDebugPrint(DEBUG_WARNING, TAG, COMPONENT, __LINE__, "CORVANE_INPUT_MAP: %s: %s\n", path.c_str(), problem);
}

/// Whoever may write the file may make any key any other one.
void requireTrust(const struct stat& status)
{
    if (!S_ISREG(status.st_mode))
        throw std::runtime_error("it is no file");
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        throw std::runtime_error("others than its owner may write it");
    if (status.st_uid != 0 && status.st_uid != geteuid())
        throw std::runtime_error("it belongs neither to root nor to the user of this process");
    if (status.st_size > LIMIT)
        throw std::runtime_error("it is longer than 1 MiB");
}

std::string readAll(int descriptor)
{
    std::string text;
    std::array<char, 4096> block{};
    ssize_t count = 0;
    while ((count = read(descriptor, block.data(), block.size())) > 0 && text.size() <= LIMIT)
        text.append(block.data(), static_cast<std::size_t>(count));
    if (count < 0)
        throw std::system_error(errno, std::generic_category());
    return text;
}

/// @return nothing when there is no such file
std::optional<std::string> readFile(const std::string& path)
{
    // Without blocking: it may be a pipe that nobody writes to.
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isOpen() && errno == ENOENT)
        return {};
    struct stat status {
    };
    if (!file.isOpen() || fstat(file.get(), &status) != 0)
        throw std::system_error(errno, std::generic_category());
    requireTrust(status);
    return readAll(file.get());
}

std::string readLine(const std::string& path)
{
    std::string line;
    std::getline(std::ifstream(path), line);
    return line;
}

unsigned int readNumber(const std::string& path)
{
    constexpr int BASE = 16;
    return static_cast<unsigned int>(std::strtoul(readLine(path).c_str(), nullptr, BASE));
}

} // namespace

InputMapFile::InputMapFile()
{
    const char* const named = std::getenv("CORVANE_INPUT_MAP");
    if (named == nullptr || *named == '\0')
        return;
    path = named;
    // Listening comes first: what changes meanwhile is read twice rather than not at all.
    listen();
    load();
}

void InputMapFile::listen()
{
    // The folder, and not the file: editors put another file in its place.
    const std::string folder = std::filesystem::path(path).parent_path();
    changes.reset(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (inotify_add_watch(changes.get(), folder.empty() ? "." : folder.c_str(),
                          IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_ATTRIB) < 0) {
        tell(path, "its changes are not noticed: the system does not tell");
        changes.reset();
    }
}

bool InputMapFile::takeNews()
{
    const std::string file = std::filesystem::path(path).filename();
    bool hasChanged = false;
    alignas(inotify_event) std::array<char, 4096> news{};
    ssize_t size = 0;
    while ((size = read(changes.get(), news.data(), news.size())) > 0) {
        for (ssize_t at = 0; at < size;) {
            inotify_event event{};
            std::memcpy(&event, news.data() + at, sizeof event);
            const char* const name = news.data() + at + sizeof event;
            // Where too much has happened at once, the system says only that.
            hasChanged = hasChanged || (event.mask & IN_Q_OVERFLOW) != 0 || (event.len > 0 && file == name);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    return hasChanged && load();
}

bool InputMapFile::load()
{
    try {
        const std::optional<std::string> text = readFile(path);
        map = text ? InputMap(*text) : InputMap();
        return true;
    } catch (const std::system_error& failure) {
        tell(path, failure.code().message().c_str());
    } catch (const std::runtime_error& failure) {
        tell(path, failure.what());
    }
    return false;
}

std::shared_ptr<const DeviceRule> InputMapFile::find(const std::string& folder) const
{
    return map.isEmpty() ? nullptr : map.find(readIdentity(folder));
}

DeviceIdentity readIdentity(const std::string& folder)
{
    const std::string device = std::filesystem::path(folder).parent_path();
    return {.name = readLine(device + "/name"),
            .bus = readNumber(device + "/id/bustype"),
            .vendor = readNumber(device + "/id/vendor"),
            .product = readNumber(device + "/id/product")};
}

} // namespace Corvane
