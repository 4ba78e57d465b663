#pragma once

#include <corvane/common/FileDescriptor.h>
#include <string>
#include <vector>

namespace Procmand
{

/// The file that outlives the process manager: one JSON object a line, appended to until it is written anew.
///
/// Records that cannot be written, on a full disk for instance, wait here and go before later ones. Where they become
/// too many they are dropped; the file lacks them until it is written anew, from what is known then. Not synchronised.
class History
{
public:
    /// By so many bytes the file may grow until it should be written anew.
    static constexpr std::size_t LONG_GROWTH = 4 * 1024 * 1024;
    /// By so many it may grow where it cannot be written anew.
    static constexpr std::size_t GROWTH_LIMIT = 2 * LONG_GROWTH;
    /// So many bytes of records wait at most.
    static constexpr std::size_t WAITING_LIMIT = 1024 * 1024;

    /// As long as one is there, records only wait; then they are written in one call, so that a process manager that is
    /// killed leaves all of them or none.
    class Whole
    {
    public:
        explicit Whole(History& history) : history(history) { ++history.wholes; }
        ~Whole()
        {
            --history.wholes;
            history.retry();
        }
        Whole(const Whole&) = delete;
        Whole& operator=(const Whole&) = delete;

    private:
        History& history;
    };

    /// Opens the file, or creates it. What an interrupted write left at its end is closed off.
    /// @throws std::system_error
    explicit History(std::string path);

    /// @return the records so far, in their order
    std::vector<std::string> read() const;
    /// @param record  a JSON object on one line
    void append(const std::string& record);
    /// Tries once more to write what waits.
    void retry();
    /// @return whether records wait to be written
    bool isWaiting() const { return !waiting.empty(); }
    /// @return whether the file should be written anew: it has grown so much, or it lacks records
    bool isLong() const { return isIncomplete || size > rewrittenSize + LONG_GROWTH; }
    /// Puts these records in the place of all others, and of those that wait; a failure leaves the file as it is.
    /// @return whether it worked
    bool rewrite(const std::vector<std::string>& records);

private:
    void dropWaiting();
    bool report(const char* action);

    const std::string path;
    Corvane::FileDescriptor file;
    std::size_t size = 0;
    std::size_t rewrittenSize = 0;
    unsigned int wholes = 0;
    std::string waiting; ///< goes on where the file ends, be it within a record
    bool isIncomplete = false;
    bool failed = false; ///< and the log has told so
};

} // namespace Procmand
