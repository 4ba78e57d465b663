#include "DeviceTable.h"

#include "ScreenSize.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <corvane/Foundation.h>
#include <cstring>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <utility>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "MultiInputDriver";
constexpr const char* COMPONENT = "DeviceTable";

} // namespace

DeviceTable::DeviceTable(int wakeUp, Sink sink)
    : epoll(epoll_create1(EPOLL_CLOEXEC)),
      wakeUp(wakeUp),
      sink(std::move(sink)),
      screen(readScreenSize()),
      repeat(readKeyRepeat())
{
    if (!epoll.isOpen()) {
        corvaneDebugPrint(DEBUG_ERROR, TAG, COMPONENT, __LINE__, "epoll_create1 failed %s", std::strerror(errno));
        throw Exception(RETURN_REFUSED_BY_SYSTEM);
    }
    watch(wakeUp, nullptr);
    if (map.getDescriptor() >= 0)
        watch(map.getDescriptor(), &map);
}

void DeviceTable::watch(int descriptor, void* meaning)
{
    epoll_event event{.events = EPOLLIN, .data = {.ptr = meaning}};
    epoll_ctl(epoll.get(), EPOLL_CTL_ADD, descriptor, &event);
}

void DeviceTable::ignore(int descriptor) const
{
    // Closing it does not do that while a child process has a copy, as between fork() and exec().
    epoll_ctl(epoll.get(), EPOLL_CTL_DEL, descriptor, nullptr);
}

void DeviceTable::apply(const Switches& wanted)
{
    if (switches == wanted)
        return;
    const std::optional<Switches> before = std::exchange(switches, wanted);
    if (before.value_or(Switches{}).hotplug != wanted.hotplug)
        switchHotplug();
    // Listening comes first: what is plugged in meanwhile is reported twice rather than not at all.
    if (!before || (wanted.hotplug && !before->hotplug))
        monitor.reportAll([this](const DeviceReport& report) { hear(report); });
    for (auto& [name, entry] : entries)
        update(entry);
}

void DeviceTable::switchHotplug()
{
    if (!switches->hotplug) {
        ignore(monitor.getDescriptor());
        monitor.stopListening();
    } else if (monitor.listen()) {
        watch(monitor.getDescriptor(), &monitor);
    }
}

void DeviceTable::hearNews()
{
    bool isOutdated = false;
    monitor.reportNews([&](const DeviceReport& report) {
        // Where there is a daemon by now, a new device is its to tell of, above all the seat.
        if (!report.isGone && monitor.isOutdated())
            isOutdated = true;
        else
            hear(report);
    });
    if (isOutdated)
        changeSource();
}

void DeviceTable::changeSource()
{
    ignore(monitor.getDescriptor());
    switchHotplug();
    // What the daemon has looked at already it does not tell again.
    monitor.reportAll([this](const DeviceReport& report) {
        if (report.isTagged)
            hear(report);
    });
}

void DeviceTable::hear(const DeviceReport& report)
{
    if (report.isGone)
        return forget(report);
    const auto [named, isNew] = entries.try_emplace(report.name, Entry{report});
    Entry& entry = named->second;
    if (isNew)
        entry.rule = map.find(report.name);
    const bool hasOtherKind = report.kind && report.kind != entry.report.kind;
    // The daemon may say more, or something else, of a device that was found before its rules had run.
    if (hasOtherKind || report.sessionIndex != entry.report.sessionIndex) {
        close(entry);
        entry.report = report;
    }
    update(entry);
}

void DeviceTable::forget(const DeviceReport& report)
{
    if (const auto named = entries.find(report.name); named != entries.end()) {
        close(named->second);
        entries.erase(named);
    }
}

bool DeviceTable::isWanted(InputClass which) const
{
    return (which == InputClass::MOUSE && switches->mouse) || (which == InputClass::KEYBOARD && switches->keyboard) ||
           (which == InputClass::REMOTE && switches->remote);
}

std::optional<DeviceKind> DeviceTable::findKind(const Entry& entry)
{
    return entry.rule != nullptr ? entry.rule->decide(entry.report.kind) : entry.report.kind;
}

unsigned int DeviceTable::findSession(const Entry& entry)
{
    return entry.rule != nullptr ? entry.rule->session.value_or(entry.report.sessionIndex) : entry.report.sessionIndex;
}

void DeviceTable::applyMap()
{
    for (auto& [name, entry] : entries) {
        const std::shared_ptr<const DeviceRule> rule = map.find(name);
        const bool isSame = rule == nullptr || entry.rule == nullptr ? rule == entry.rule : *rule == *entry.rule;
        if (isSame)
            continue;
        close(entry);
        entry.rule = rule;
        update(entry);
    }
}

EventTranslator::Parts DeviceTable::findWanted(const DeviceKind& kind) const
{
    return {isWanted(kind.keys), isWanted(kind.pointer)};
}

void DeviceTable::update(Entry& entry)
{
    // A device of a kind that is not known yet is opened to find out, unless nothing is wanted at all.
    const std::optional<DeviceKind> kind = findKind(entry);
    const bool mayBeWanted =
        kind ? findWanted(*kind).isAny() : switches->mouse || switches->keyboard || switches->remote;
    if (!mayBeWanted)
        close(entry);
    else if (entry.device == nullptr)
        open(entry);
    else
        entry.device->enable(findWanted(*kind));
}

void DeviceTable::open(Entry& entry)
{
    try {
        auto device = std::make_unique<EventDevice>(entry.report.path);
        entry.hasFailed = false;
        if (!findKind(entry))
            entry.report.kind = device->findKind();
        const DeviceKind kind = *findKind(entry);
        const EventTranslator::Parts wanted = findWanted(kind);
        if (!wanted.isAny())
            return;
        device->start(kind, screen, [this, session = findSession(entry), identity = device.get()](auto event) {
            sink({std::move(event), session, identity});
        });
        if (repeat)
            device->setRepeat(*repeat);
        if (kind.keys == InputClass::KEYBOARD)
            device->setTyping(layout.makeTyping());
        device->setRule(entry.rule);
        device->enable(wanted);
        watch(device->getDescriptor(), &entry);
        entry.device = std::move(device);
    } catch (const std::system_error& failure) {
        complain(entry, failure.code().message());
        // What changed before the watch began was not heard: this is asked once more.
        if (watchNodes(entry.report.path))
            open(entry);
    }
}

void DeviceTable::complain(Entry& entry, const std::string& reason) const
{
    if (!std::exchange(entry.hasFailed, true))
        corvaneDebugPrint(DEBUG_WARNING, TAG, COMPONENT, __LINE__, "cannot open %s: %s\n", entry.report.path.c_str(),
                          reason.c_str());
}

bool DeviceTable::watchNodes(const std::string& path)
{
    const bool isNew = nodes.start(path.substr(0, path.rfind('/')));
    if (isNew)
        watch(nodes.getDescriptor(), &nodes);
    return isNew;
}

void DeviceTable::openFailed()
{
    nodes.take();
    for (auto& [name, entry] : entries)
        if (entry.hasFailed)
            update(entry);
    if (std::ranges::any_of(entries, [](const auto& named) { return named.second.hasFailed; }))
        return;
    ignore(nodes.getDescriptor());
    nodes.stop();
}

void DeviceTable::close(Entry& entry)
{
    if (entry.device != nullptr) {
        ignore(entry.device->getDescriptor());
        entry.device->enable({});
    }
    entry.device = nullptr;
    entry.isReady = false;
    entry.isHungUp = false;
}

void DeviceTable::wait()
{
    const bool isAnyReady = std::ranges::any_of(entries, [](const auto& named) { return named.second.isReady; });
    read(isAnyReady ? 0 : -1);
}

void DeviceTable::poll()
{
    read(0);
}

void DeviceTable::read(int timeout)
{
    std::array<epoll_event, 16> events{};
    const int count = epoll_wait(epoll.get(), events.data(), events.size(), timeout);
    bool hasNews = false;
    bool haveNodesChanged = false;
    bool hasMapChanged = false;
    for (int i = 0; i < count; ++i) {
        const epoll_event& event = events[static_cast<std::size_t>(i)];
        if (event.data.ptr == nullptr)
            takeWakeUp();
        else if (event.data.ptr == &monitor)
            hasNews = true;
        else if (event.data.ptr == &nodes)
            haveNodesChanged = true;
        else if (event.data.ptr == &map)
            hasMapChanged = map.takeNews();
        else
            markReady(*static_cast<Entry*>(event.data.ptr), event.events);
    }
    readDevices();
    if (haveNodesChanged)
        openFailed();
    if (hasMapChanged)
        applyMap();
    // Last: it may take entries away.
    if (hasNews)
        hearNews();
}

void DeviceTable::takeWakeUp() const
{
    eventfd_t count = 0;
    eventfd_read(wakeUp, &count);
}

void DeviceTable::markReady(Entry& entry, unsigned int events)
{
    entry.isReady = true;
    entry.isHungUp = (events & (EPOLLHUP | EPOLLERR)) != 0;
}

void DeviceTable::readDevices()
{
    for (auto next = entries.begin(); next != entries.end();) {
        const auto current = next++;
        Entry& entry = current->second;
        if (!entry.isReady)
            continue;
        const EventDevice::Reading reading = entry.device->read();
        entry.isReady = reading == EventDevice::Reading::MORE;
        // A device that hung up would keep the thread awake for ever.
        if (reading == EventDevice::Reading::LOST || (reading == EventDevice::Reading::DONE && entry.isHungUp)) {
            close(entry);
            entries.erase(current);
        }
    }
}

} // namespace Corvane
