#pragma once

#include "box/Box.h"

#include <corvane/common/RPCError.h>

namespace Procmand
{

/// Hears what happens on the links to the applications. Called on the loop.
class ILinkListener
{
public:
    virtual void onConnected(ManagedApplication& application) = 0;
    /// The control server has gone; whatever it had to say was passed on before.
    virtual void onDisconnected(ManagedApplication& application) = 0;
    /// A control server that takes connections and answers nothing.
    virtual void onSilence(ManagedApplication& application) = 0;
    virtual void onNotification(ManagedApplication& application, const std::string& name,
                                const std::string& payload) = 0;
    /// What the application answered when it was asked, right after it was connected.
    virtual void onState(ManagedApplication& application, const std::string& state, bool isFocused) = 0;
    virtual ~ILinkListener() = default;
};

/// The process manager's subscriptions to the control servers of the applications.
///
/// A link is made as soon as the server is there, by a worker; RPCClient makes it again when the server comes back.
class Links
{
public:
    Links(Box& box, ILinkListener& listener);

    /// Begins to watch the folder in which servers appear. @throws std::system_error
    void start(const std::string& folder);
    /// Makes the link, if there is a server; else it is made when one appears.
    void connect(ManagedApplication& application);
    /// Ends the link. A handler of it that runs is waited for, elsewhere.
    void disconnect(ManagedApplication& application);
    /// Removes, soon, the socket that an application left behind that has ended; one that is used again stays.
    void removeSocket(const std::string& uid);

private:
    /// Why there is no link.
    enum class Failure { NONE, NO_SERVER, SILENCE, OTHER };

    void readFolderEvents();
    void onServerFile(const std::string& fileName);
    void subscribe(const std::string& uid, unsigned long generation);
    static Failure findFailure(const Corvane::RPCError& error);
    void finishConnecting(const std::string& uid, unsigned long generation,
                          std::shared_ptr<Corvane::RPCClient> connection, Failure failure);
    void onConnectionChange(const std::string& uid, unsigned long generation, bool connected);
    void askForState(const std::string& uid, unsigned long generation);
    void removeSocket(const std::string& uid, unsigned int tries);

    Box& box;
    ILinkListener& listener;
    Corvane::FileDescriptor folderWatch;
};

} // namespace Procmand
