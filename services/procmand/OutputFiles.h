#pragma once

#include <corvane/common/FileDescriptor.h>
#include <string>

namespace Procmand
{

/// What launched applications print, in files: a process manager that dies takes nothing away from those who write.
///
/// There are two files for an application, named after its token. Thread-safe.
class OutputFiles
{
public:
    enum class Stream { OUTPUT, ERROR };
    /// So much of the end of an application's standard error is kept with its history.
    static constexpr std::size_t TAIL_SIZE = 4096;

    /// Creates the folder where it is missing.
    explicit OutputFiles(std::string folder);

    /// Opens a file for writing at its end; what an earlier process of that name wrote is gone.
    /// @throws std::system_error
    Corvane::FileDescriptor open(const std::string& token, Stream stream) const;
    /// @return the last TAIL_SIZE bytes of an application's standard error
    std::string readTail(const std::string& token) const;
    void remove(const std::string& token) const;
    /// Gives the beginnings of files that have grown long back to the file system. Their ends stay.
    void trim() const;

private:
    std::string pathOf(const std::string& token, Stream stream) const;

    const std::string folder;
};

} // namespace Procmand
