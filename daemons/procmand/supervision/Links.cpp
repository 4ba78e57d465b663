#include "supervision/Links.h"

#include "box/ServerSocket.h"

#include <cerrno>
#include <climits>
#include <corvane/common/RPCError.h>
#include <corvane/foundation/DebugPrint.h>
#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/Exception.h>
#include <sys/inotify.h>
#include <system_error>

namespace Procmand
{

namespace
{

using Corvane::RPCClient;
using Corvane::RPCError;

/// How soon a server is tried again that did not answer the first time.
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

template <class T>
T readResult(const std::string& result)
{
    Corvane::Deserializer deserializer("{\"result\":" + result + "}");
    return Corvane::deserialize<T>("result", deserializer);
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
        if (application.isAlive() && application.socketFile == fileName) {
            application.serverAppeared = true;
            connect(application);
        }
    }
}

void Links::connect(ManagedApplication& application)
{
    if (application.isConnecting || application.connection)
        return;
    application.isConnecting = true;
    application.serverAppeared = false;
    box.workers.run([this, uid = application.uid, generation = application.generation] { subscribe(uid, generation); });
}

void Links::subscribe(const std::string& uid, unsigned long generation)
{
    auto connection = std::make_shared<RPCClient>(serverNameOf(uid));
    Failure failure = Failure::NONE;
    try {
        connection->subscribe(
            {"*"},
            [this, uid, generation](const std::string& name, const std::string& payload) {
                box.loop.post([this, uid, generation, name, payload] {
                    if (ManagedApplication* const application = box.registry.find(uid, generation))
                        listener.onNotification(*application, name, payload);
                });
            },
            [this, uid, generation](bool connected) {
                box.loop.post([this, uid, generation, connected] { onConnectionChange(uid, generation, connected); });
            },
            box.settings.callDeadline);
    } catch (const RPCError& error) {
        failure = findFailure(error);
    } catch (const Corvane::Exception&) {
        failure = Failure::OTHER; // the system has no thread for it now
    }
    if (failure != Failure::NONE)
        connection.reset();
    box.loop.post([this, uid, generation, connection = std::move(connection), failure]() mutable {
        finishConnecting(uid, generation, std::move(connection), failure);
    });
}

Links::Failure Links::findFailure(const RPCError& error)
{
    switch (error.getReason()) {
    case RPCError::Reason::NO_SERVER:
        return Failure::NO_SERVER;
    case RPCError::Reason::TIMED_OUT:
        return Failure::SILENCE;
    default:
        return Failure::OTHER;
    }
}

void Links::finishConnecting(const std::string& uid, unsigned long generation, std::shared_ptr<RPCClient> connection,
                             Failure failure)
{
    ManagedApplication* const application = box.registry.find(uid, generation);
    // One whose process has ended may have last words to say; who waits for none has renewed the application.
    if (application == nullptr) {
        // Too late. To end a subscription takes a moment, which is not the loop's to wait.
        box.workers.run([connection = std::move(connection)] {});
        return;
    }
    application->isConnecting = false;
    application->connection = std::move(connection);
    if (application->connection)
        return;
    if (failure == Failure::SILENCE)
        listener.onSilence(*application);
    // Where there is no server yet, its file will tell of it.
    if (application->serverAppeared || failure != Failure::NO_SERVER)
        box.loop.schedule(application->serverAppeared ? std::chrono::milliseconds::zero() : RETRY_DELAY,
                          [this, uid, generation] {
                              if (ManagedApplication* const again = box.registry.find(uid, generation))
                                  connect(*again);
                          });
}

void Links::onConnectionChange(const std::string& uid, unsigned long generation, bool connected)
{
    ManagedApplication* const application = box.registry.find(uid, generation);
    if (application == nullptr)
        return;
    application->isConnected = connected;
    if (!connected)
        return listener.onDisconnected(*application);
    listener.onConnected(*application);
    box.workers.run([this, uid, generation] { askForState(uid, generation); });
}

void Links::askForState(const std::string& uid, unsigned long generation)
{
    RPCClient client(serverNameOf(uid));
    std::string state;
    bool isFocused = false;
    try {
        state = readResult<std::string>(client.call("IApplication::getState", "{}", box.settings.callDeadline));
        isFocused = readResult<bool>(client.call("IWindow::isFocused", "{}", box.settings.callDeadline));
    } catch (const std::exception&) {
        // A service has no focus; and an application that does not answer is noticed by its silence.
    }
    box.loop.post([this, uid, generation, state, isFocused] {
        ManagedApplication* const application = box.registry.find(uid, generation);
        // What the application has announced in the meantime is newer.
        if (application != nullptr && application->hearing != Hearing::ANNOUNCED && !state.empty())
            listener.onState(*application, state, isFocused);
    });
}

void Links::disconnect(ManagedApplication& application)
{
    if (application.connection)
        box.workers.run([connection = std::move(application.connection)] {});
    application.connection.reset();
    application.isConnected = false;
    application.isConnecting = false;
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
