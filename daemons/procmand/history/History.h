#pragma once

#include <corvane/common/FileDescriptor.h>
#include <string>
#include <vector>

namespace Procmand
{

/// The file that outlives the process manager: one JSON object a line, only ever appended to.
///
/// A record that cannot be written is lost, with one debug line for the first. Not synchronised.
class History
{
public:
    /// Opens the file, or creates it. What an interrupted write left at its end is closed off.
    /// @throws std::system_error
    explicit History(std::string path);

    /// @return the records so far, in their order
    std::vector<std::string> read() const;
    /// @param record  a JSON object on one line
    void append(const std::string& record);
    /// @return whether the file has grown so much since it was written anew that this should be done again
    bool isLong() const;
    /// Puts these records in the place of all others; a failure leaves the file as it is.
    void rewrite(const std::vector<std::string>& records);

private:
    void open();
    void report(const char* action);

    const std::string path;
    Corvane::FileDescriptor file;
    std::size_t rewrittenSize = 0;
    bool failed = false;
};

} // namespace Procmand
