#pragma once

#include <unistd.h>
#include <utility>

namespace Corvane
{

/// Owns a file descriptor, or none (-1), and closes it. Not synchronised.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        if (this != &other)
            reset(std::exchange(other.descriptor, -1));
        return *this;
    }
    ~FileDescriptor() { reset(); }

    int get() const { return descriptor; }
    bool isOpen() const { return descriptor >= 0; }
    /// Closes what is owned and takes over `newDescriptor`.
    void reset(int newDescriptor = -1)
    {
        if (descriptor >= 0)
            ::close(descriptor);
        descriptor = newDescriptor;
    }

private:
    int descriptor = -1;
};

} // namespace Corvane
