#pragma once

#include "box/Box.h"
#include "supervision/Pace.h"

#include <corvane/common/RPCChannel.h>

namespace Procmand
{

/// A link to the control server of one application: what it says, and calls to it. Nothing here waits.
///
/// Made and held by Links; the loop holds it as well while it is at work for it. Guarded by the lock of the box.
class Link : public std::enable_shared_from_this<Link>
{
public:
    /// @param result  as JSON text; null where there is none, and then the problem tells why
    using AnswerHandler = std::function<void(const std::string* result, const std::string& problem)>;

    /// Hears what happens on a link. Called on the loop.
    class IListener
    {
    public:
        virtual void onNotification(const std::string& uid, const std::string& name, const std::string& payload) = 0;
        /// The server has left, or says what cannot be understood: the link is to be closed.
        virtual void onLinkEnd(const std::string& uid) = 0;
        virtual ~IListener() = default;
    };

    /// Connects. @throws RPCError  as RPCChannel does
    Link(Box& box, std::string uid, IListener& listener);
    /// Begins to listen. @throws std::exception  the system has not what it takes
    void start();
    /// Ends the link; what is still to be answered is not. The listener does not hear of it.
    void close();

    /// Calls a method. The answer is waited for as long as the link lasts.
    /// @param onAnswer  called on the loop, not before this returns; also when the link ends first
    /// @throws RPCError  the server takes no more calls
    void call(const std::string& method, const std::string& parameters, AnswerHandler onAnswer);
    /// Asks for what applications announce.
    /// @throws RPCError  as `call` does
    void subscribe(AnswerHandler onAnswer);

    /// @return since when the link has been there
    Pace::Clock::time_point getStart() const { return begin; }

private:
    void watch();
    void pause();
    void onReadable();
    void onTurnEnd();
    void deliver();
    void take(Corvane::RPCChannel::Message message);
    void answer(const Corvane::RPCChannel::Message& message);
    /// Sees to it that the end of this turn is not missed.
    void awaitTurnEnd();
    void tellFlood();
    void end(const std::string& problem);

    Box& box;
    const std::string uid;
    IListener& listener;
    Corvane::RPCChannel channel;
    const Pace::Clock::time_point begin = Pace::Clock::now();
    std::map<unsigned int, AnswerHandler> awaited; ///< by the number of the call
    Pace pace;
    EventLoop::Timer turnTimer = 0;
    unsigned int quietTurns = 0; ///< since it has flooded
    bool isFlooding = false;     ///< and the log says so
    unsigned long toldReplaced = 0;
    bool isWatched = false;
    bool isOpen = true; ///< the server has not left
    bool isClosed = false;
};

} // namespace Procmand
