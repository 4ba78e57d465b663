#pragma once

#include <corvane/common/FileDescriptor.h>
#include <cstdint>
#include <set>
#include <string>

namespace Procmand
{

/// What launched applications print, in files: a process manager that dies takes nothing away from those who write.
///
/// An application has two files, TOKEN.out and TOKEN.err; what its earlier runs printed is in TOKEN.out.1 and so on,
/// the latest first. Thread-safe, but for one token at a time.
class OutputFiles
{
public:
    enum class Stream { OUTPUT, ERROR };
    struct Run {
        Corvane::FileDescriptor output;
        Corvane::FileDescriptor error;
    };

    /// So much of the end of each stream is kept with an application's history.
    static constexpr std::size_t TAIL_SIZE = 4096;
    /// So many bytes a file may take.
    static constexpr std::uint64_t ROOM_LIMIT = 256 * 1024;
    /// The files of so many runs of an application are kept, of those that printed something.
    static constexpr unsigned int RUN_LIMIT = 3;

    /// Creates the folder where it is missing.
    explicit OutputFiles(std::string folder);

    /// Opens new files for a run, for writing at their ends. @throws std::system_error
    Run beginRun(const std::string& token) const;
    /// @return the last TAIL_SIZE bytes of what the latest run printed
    std::string readTail(const std::string& token, Stream stream) const;
    /// Removes the files of all other applications.
    void keepOnly(const std::set<std::string>& tokens) const;
    /// Gives the beginning of a file that takes more than ROOM_LIMIT back to the file system. Its end stays.
    /// @param name  of a file in the folder
    /// @return how much room the file took before
    std::uint64_t trim(const std::string& name) const;
    void trimAll() const;
    const std::string& getFolder() const { return folder; }

private:
    /// @param run  0 for the latest
    std::string pathOf(const std::string& token, Stream stream, unsigned int run = 0) const;
    void putEarlierRunsBack(const std::string& token) const;

    const std::string folder;
};

} // namespace Procmand
