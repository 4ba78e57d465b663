#pragma once

#include <corvane/interfaces/IWindowEvent.h>
#include <cstddef>
#include <deque>
#include <memory>

namespace Corvane
{

/// The events that wait for the listeners, in the order in which they came. Not synchronised.
///
/// A listener that takes long must not cost a key. So keys and buttons are all kept; once MERGE_FROM events wait, the
/// movement of a device goes into what it said last, if that is movement alone and waits still. It keeps its place
/// among the device's keys, and no step of it is lost. From LIMIT on the queue is full: who reads devices stops then.
class EventQueue
{
public:
    using EventPointer = std::shared_ptr<const IWindowEvent::InputEvent>;

    struct Entry {
        EventPointer event;
        unsigned int sessionIndex;
        const void* device; ///< that it came from, only to be compared; null for one that an application made
    };

    static constexpr std::size_t MERGE_FROM = 512;
    static constexpr std::size_t LIMIT = 1024;

    void push(Entry entry);
    /// Takes the first event. There is one.
    Entry pop();
    bool isEmpty() const { return entries.empty(); }
    bool isFull() const { return entries.size() >= LIMIT; }

private:
    bool merge(const Entry& entry);

    std::deque<Entry> entries;
};

} // namespace Corvane
