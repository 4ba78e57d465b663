#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <new>

namespace Corvane
{

/// A few objects of class T that the process keeps ready for whoever needs one for a moment; when all are taken, the
/// heap supplies the next.
///
/// Claiming a slot neither locks nor allocates, so that a thread that died inside malloc can still use one. A pool is
/// static storage, never destroyed. T has `void recycle()`, called when its object comes back. Thread-safe, signal-safe
/// while a slot is free.
template <class T, std::size_t COUNT = 4>
class SlotPool
{
public:
    /// Builds the objects of the slots. To be called once, while the library is loaded; until then all come from the
    /// heap.
    void fill()
    {
        for (Slot& slot : slots) {
            new (slot.storage) T;
            slot.isFree.store(true, std::memory_order_release);
        }
    }

    /// @return an object that belongs to the caller until it gives it back; never null
    T* claim()
    {
        for (Slot& slot : slots)
            if (slot.isFree.exchange(false, std::memory_order_acquire))
                return slot.getObject();
        return new T;
    }

    void giveBack(T* object)
    {
        for (Slot& slot : slots) {
            if (object != slot.getObject())
                continue;
            object->recycle();
            slot.isFree.store(true, std::memory_order_release);
            return;
        }
        delete object;
    }

    /// Calls `visit(object)` for each object that nobody has claimed, and that nobody gets meanwhile.
    template <class Visitor>
    void visitFree(Visitor visit)
    {
        for (Slot& slot : slots) {
            if (!slot.isFree.exchange(false, std::memory_order_acquire))
                continue;
            visit(*slot.getObject());
            slot.isFree.store(true, std::memory_order_release);
        }
    }

private:
    struct Slot {
        T* getObject() { return std::launder(reinterpret_cast<T*>(storage)); }

        std::atomic<bool> isFree{false};
        alignas(T) unsigned char storage[sizeof(T)]{};
    };

    std::array<Slot, COUNT> slots{};
};

} // namespace Corvane
