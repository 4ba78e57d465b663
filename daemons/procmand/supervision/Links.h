#pragma once

#include "supervision/Link.h"

namespace Procmand
{

/// Hears what happens on the links to the applications. Called on the loop.
class ILinkListener
{
public:
    virtual void onConnected(ManagedApplication& application) = 0;
    /// The control server has gone; whatever it had to say was passed on before.
    virtual void onDisconnected(ManagedApplication& application) = 0;
    /// A control server that is there and answers nothing.
    virtual void onSilence(ManagedApplication& application) = 0;
    virtual void onNotification(ManagedApplication& application, const std::string& name,
                                const std::string& payload) = 0;
    /// What the application answered when it was asked, right after it was connected.
    virtual void onState(ManagedApplication& application, const std::string& state, bool isFocused) = 0;
    virtual ~ILinkListener() = default;
};

/// The process manager's links to the control servers of the applications: one each, all of them served by the loop.
///
/// A link is made as soon as the server is there, and again when it comes back.
class Links : private Link::IListener
{
public:
    /// So many servers may owe the answer to their subscription at once; further links are made when some have given
    /// it, or were given up. It bounds the descriptors that silent servers cost.
    static constexpr std::size_t OPENING_LIMIT = 256;

    Links(Box& box, ILinkListener& listener);

    /// Begins to watch the folder in which servers appear. @throws std::system_error
    void start(const std::string& folder);
    /// Makes the link, if there is a server; else it is made when one appears.
    void connect(ManagedApplication& application);
    /// Ends the link.
    void disconnect(ManagedApplication& application);
    /// Calls a method of the application. What comes of it is told on the loop.
    /// @throws RPCError  there is no link, or the server takes no more calls
    void call(const ManagedApplication& application, const std::string& method, const std::string& parameters,
              Link::AnswerHandler onAnswer);
    /// Removes, soon, the socket that an application left behind that has ended; one that is used again stays.
    void removeSocket(const std::string& uid);

private:
    /// A link, and the deadline for the answer to its subscription: 0 once that has come.
    struct Entry {
        std::shared_ptr<Link> link;
        EventLoop::Timer deadline = 0;
    };

    void onNotification(const std::string& uid, const std::string& name, const std::string& payload) override;
    void onLinkEnd(const std::string& uid) override;

    void readFolderEvents();
    void onServerFile(const std::string& fileName);
    void open(const ManagedApplication& application);
    void connectLater(const ManagedApplication& application, std::chrono::milliseconds delay);
    void onSubscribed(const std::string& uid, const std::string* result);
    void setConnected(ManagedApplication& application);
    void onSubscriptionDeadline(const std::string& uid);
    void askForState(const std::string& uid);
    void drop(const std::string& uid);
    void removeSocket(const std::string& uid, unsigned int tries);

    Box& box;
    ILinkListener& listener;
    Corvane::FileDescriptor folderWatch;
    std::map<std::string, Entry> links; ///< by uid
};

} // namespace Procmand
