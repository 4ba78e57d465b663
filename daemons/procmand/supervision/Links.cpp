#include "supervision/Links.h"

#include "box/ServerSocket.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/ReturnCode.h>
#include <sys/inotify.h>
#include <system_error>

namespace Procmand
{

namespace
{

using Corvane::corvaneDebugPrint;
using Corvane::RPCError;

/// How soon a server is tried again that did not answer, or whose link did not last so long.
constexpr std::chrono::seconds RETRY_DELAY{1};
/// How soon a socket is looked at again while names change hands, which takes a moment each; and how often.
constexpr std::chrono::milliseconds REMOVAL_DELAY{50};
constexpr unsigned int REMOVAL_LIMIT = 100;

/// @return the file name of the server's socket
std::string socketFileOf(const std::string& uid)
{
    const std::string path = findSocketPath(serverNameOf(uid));
    return path.substr(path.rfind('/') + 1);
}

/// @return the result of a call; a T of nothing where there is none, or it is none
template <class T>
T readResult(const std::string* result)
try {
    if (result == nullptr)
        return {};
    Corvane::Deserializer deserializer("{\"result\":" + *result + "}");
    return Corvane::deserialize<T>("result", deserializer);
} catch (const Corvane::SerialError&) {
    return {};
}

} // namespace

Links::Links(Box& box, ILinkListener& listener)
    : box(box), listener(listener), folderWatch(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
}

void Links::start(const std::string& folder)
{
    // A server changes the mode of its socket once it listens.
    if (inotify_add_watch(folderWatch.get(), folder.c_str(), IN_ATTRIB | IN_MOVED_TO) < 0)
        throw std::system_error(errno, std::generic_category(), "cannot watch " + folder);
    box.loop.watch(folderWatch.get(), [this] { readFolderEvents(); });
}

void Links::readFolderEvents()
{
    alignas(inotify_event) char buffer[16 * (sizeof(inotify_event) + NAME_MAX + 1)];
    ssize_t size = 0;
    while ((size = read(folderWatch.get(), buffer, sizeof buffer)) > 0) {
        for (const char* position = buffer; position < buffer + size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(position);
            if (event->len > 0)
                onServerFile(event->name);
            position += sizeof(inotify_event) + event->len;
        }
    }
}

void Links::onServerFile(const std::string& fileName)
{
    for (auto& [uid, application] : box.registry.getAll()) {
        if (application.socketFile.empty())
            application.socketFile = socketFileOf(uid);
        if (application.isAlive() && application.socketFile == fileName)
            connect(application);
    }
}

void Links::connect(ManagedApplication& application)
{
    if (links.contains(application.uid))
        return;
    const auto opening =
        std::count_if(links.begin(), links.end(), [](const auto& entry) { return entry.second.deadline != 0; });
    if (static_cast<std::size_t>(opening) >= OPENING_LIMIT)
        return connectLater(application, RETRY_DELAY);
    try {
        open(application);
    } catch (const RPCError& error) {
        drop(application.uid);
        // Where there is no server yet, its file will tell of it.
        if (error.getReason() == RPCError::Reason::NO_SERVER)
            return;
        connectLater(application, RETRY_DELAY);
        if (error.getReason() == RPCError::Reason::TIMED_OUT)
            listener.onSilence(application);
    } catch (const std::exception& error) {
        corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "Links", __LINE__, "%s cannot be listened to: %s\n",
                          application.uid.c_str(), error.what());
        drop(application.uid);
        connectLater(application, RETRY_DELAY);
    }
}

void Links::open(const ManagedApplication& application)
{
    const std::string uid = application.uid;
    Link::IListener& self = *this;
    Entry& entry = links[uid];
    entry.link = std::make_shared<Link>(box, uid, self);
    entry.deadline = box.loop.schedule(box.settings.callDeadline, [this, uid] { onSubscriptionDeadline(uid); });
    entry.link->subscribe([this, uid](const std::string* result, const std::string&) { onSubscribed(uid, result); });
    // In the same breath: what was missed so far is to be known soon.
    askForState(uid);
    entry.link->start();
}

void Links::connectLater(const ManagedApplication& application, std::chrono::milliseconds delay)
{
    box.loop.schedule(delay, [this, uid = application.uid, generation = application.generation] {
        if (ManagedApplication* const again = box.registry.find(uid, generation); again != nullptr && !again->end)
            connect(*again);
    });
}

void Links::onSubscribed(const std::string& uid, const std::string* result)
{
    ManagedApplication& application = box.registry.require(uid);
    if (result == nullptr) {
        connectLater(application, RETRY_DELAY);
        return drop(uid);
    }
    setConnected(application);
}

void Links::setConnected(ManagedApplication& application)
{
    if (std::exchange(application.isConnected, true))
        return;
    box.loop.cancel(links.at(application.uid).deadline);
    listener.onConnected(application);
}

void Links::onSubscriptionDeadline(const std::string& uid)
{
    ManagedApplication& application = box.registry.require(uid);
    connectLater(application, RETRY_DELAY);
    drop(uid);
    listener.onSilence(application);
}

void Links::askForState(const std::string& uid)
{
    // A service has no focus; and an application that does not answer is noticed by its silence.
    const auto state = std::make_shared<std::string>();
    Link& link = *links.at(uid).link;
    link.call("IApplication::getState", "{}",
              [state](const std::string* result, const std::string&) { *state = readResult<std::string>(result); });
    link.call("IWindow::isFocused", "{}", [this, uid, state](const std::string* result, const std::string&) {
        ManagedApplication& application = box.registry.require(uid);
        if (application.isConnected && !state->empty())
            listener.onState(application, *state, readResult<bool>(result));
    });
}

void Links::call(const ManagedApplication& application, const std::string& method, const std::string& parameters,
                 Link::AnswerHandler onAnswer)
{
    const auto entry = links.find(application.uid);
    if (entry == links.end())
        throw RPCError(RPCError::Reason::NO_SERVER, Corvane::RETURN_REFUSED_BY_SYSTEM,
                       "there is no link to " + application.uid);
    entry->second.link->call(method, parameters, std::move(onAnswer));
}

void Links::onNotification(const std::string& uid, const std::string& name, const std::string& payload)
{
    ManagedApplication& application = box.registry.require(uid);
    // It may come before the answer to the subscription, and says the same.
    setConnected(application);
    listener.onNotification(application, name, payload);
}

void Links::onLinkEnd(const std::string& uid)
{
    ManagedApplication& application = box.registry.require(uid);
    // One that ends again and again is not listened to without a pause.
    const bool wasLong = Pace::Clock::now() - links.at(uid).link->getStart() >= RETRY_DELAY;
    connectLater(application, wasLong ? std::chrono::milliseconds::zero() : RETRY_DELAY);
    drop(uid);
    if (std::exchange(application.isConnected, false))
        listener.onDisconnected(application);
}

void Links::drop(const std::string& uid)
{
    const auto entry = links.find(uid);
    if (entry == links.end())
        return;
    box.loop.cancel(entry->second.deadline);
    if (entry->second.link)
        entry->second.link->close();
    links.erase(entry);
}

void Links::disconnect(ManagedApplication& application)
{
    drop(application.uid);
    application.isConnected = false;
}

void Links::removeSocket(const std::string& uid)
{
    removeSocket(uid, REMOVAL_LIMIT);
}

void Links::removeSocket(const std::string& uid, unsigned int tries)
{
    if (!removeDeadSocket(serverNameOf(uid)) && tries > 1)
        box.loop.schedule(REMOVAL_DELAY, [this, uid, tries] { removeSocket(uid, tries - 1); });
}

} // namespace Procmand
