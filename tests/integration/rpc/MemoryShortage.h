#pragma once

namespace Corvane::Test
{

/// Makes operator new fail, in every library and thread of the process, while it lives; one at a time. The first
/// allocations still succeed, so that each can be made the one that fails.
class MemoryShortage
{
public:
    enum Kind { ONCE, FROM_THEN_ON };

    /// Spares the thread that it is made on, while it lives.
    class Sparing
    {
    public:
        Sparing();
        ~Sparing();
        Sparing(const Sparing&) = delete;
        Sparing& operator=(const Sparing&) = delete;
    };

    /// @param first  the number of the allocation that fails first, counted from 0
    MemoryShortage(Kind kind, unsigned long first);
    ~MemoryShortage();
    MemoryShortage(const MemoryShortage&) = delete;
    MemoryShortage& operator=(const MemoryShortage&) = delete;

    /// @return whether an allocation has failed
    bool wasHit() const;
};

} // namespace Corvane::Test
