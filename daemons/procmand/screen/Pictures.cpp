#include "screen/Pictures.h"

#include "launch/Token.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <unistd.h>

namespace Procmand
{

namespace
{

constexpr char PREFIX[] = "screenshot-";

} // namespace

Pictures::Pictures(std::string folder) : folder(std::move(folder))
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(this->folder, error))
        if (entry.path().filename().string().starts_with(PREFIX))
            ::unlink(entry.path().c_str());
}

std::string Pictures::begin(Clock::time_point now)
{
    if (pictures.size() >= LIMIT) {
        const auto oldest = std::find_if(pictures.begin(), pictures.end(),
                                         [now](const Picture& picture) { return picture.removable <= now; });
        if (oldest == pictures.end())
            throw std::runtime_error("too many screenshots: " + std::to_string(LIMIT) +
                                     " are being taken, or were taken just now");
        ::unlink(oldest->file.c_str());
        pictures.erase(oldest);
    }
    pictures.push_back({.file = folder + "/" + PREFIX + makeToken() + ".png"});
    return pictures.back().file;
}

void Pictures::onTaken(const std::string& file, Clock::time_point now)
{
    find(file)->removable = now + KEEP_TIME;
}

void Pictures::onFailure(const std::string& file)
{
    pictures.erase(find(file));
}

std::deque<Pictures::Picture>::iterator Pictures::find(const std::string& file)
{
    return std::find_if(pictures.begin(), pictures.end(),
                        [&file](const Picture& picture) { return picture.file == file; });
}

} // namespace Procmand
