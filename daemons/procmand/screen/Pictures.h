#pragma once

#include <chrono>
#include <deque>
#include <string>

namespace Procmand
{

/// The files of the last screenshots, in a folder where others may write as well: their names cannot be guessed, so
/// that nobody can put something in their place. Not synchronised.
class Pictures
{
public:
    using Clock = std::chrono::steady_clock;

    /// So many there are at most, those that are being taken included.
    static constexpr std::size_t LIMIT = 16;
    /// So long a picture stays at least, for whoever was told of it.
    static constexpr std::chrono::seconds KEEP_TIME{2};

    /// Removes the pictures of earlier process managers.
    explicit Pictures(std::string folder);

    /// @return the file for one more; the oldest goes for it where there are too many
    /// @throws std::runtime_error  the oldest is still needed
    std::string begin(Clock::time_point now = Clock::now());
    /// The picture was taken, and its time begins.
    void onTaken(const std::string& file, Clock::time_point now = Clock::now());
    /// There is no such picture.
    void onFailure(const std::string& file);

private:
    struct Picture {
        std::string file;
        Clock::time_point removable = Clock::time_point::max();
    };
    std::deque<Picture>::iterator find(const std::string& file);

    const std::string folder;
    std::deque<Picture> pictures; ///< the oldest first
};

} // namespace Procmand
