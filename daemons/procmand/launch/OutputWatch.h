#pragma once

#include "launch/OutputFiles.h"

#include <thread>

namespace Procmand
{

/// Keeps the output files short while applications print.
///
/// A thread of its own sleeps until a file is written to, and looks at those files then: 20 times a second at most, and
/// during a burst, which fills the disk in no time, every millisecond; never while nobody prints.
class OutputWatch
{
public:
    /// Begins to watch; what was printed before is looked at first. @param files  must outlive this object
    /// @throws std::system_error
    explicit OutputWatch(const OutputFiles& files);
    ~OutputWatch();
    OutputWatch(const OutputWatch&) = delete;
    OutputWatch& operator=(const OutputWatch&) = delete;

private:
    void watch();
    /// @return whether somebody prints faster than the pauses are short
    bool trimWritten();
    /// @return the names of the files that were written to since the last look
    std::set<std::string> readWritten() const;

    const OutputFiles& files;
    const Corvane::FileDescriptor changes;
    const Corvane::FileDescriptor end; ///< can be read once the thread is to end
    std::thread thread;
};

} // namespace Procmand
