#include "supervision/Link.h"

#include "box/ServerSocket.h"

#include <corvane/foundation/DebugPrint.h>

namespace Procmand
{

namespace
{

using Corvane::corvaneDebugPrint;
using Message = Corvane::RPCChannel::Message;

/// The longest message. What an application says to the box is short; this bounds what a broken one can take here.
constexpr std::size_t MESSAGE_LIMIT = 64 * 1024;
/// So many turns below the limit end a flood: five seconds.
constexpr unsigned int QUIET_TURNS = 25;

} // namespace

Link::Link(Box& box, std::string uid, IListener& listener)
    : box(box), uid(std::move(uid)), listener(listener), channel(serverNameOf(this->uid), MESSAGE_LIMIT)
{
}

void Link::start()
{
    watch();
}

void Link::close()
{
    isClosed = true;
    pause();
    box.loop.cancel(turnTimer);
    awaited.clear();
}

void Link::watch()
{
    box.loop.watch(channel.getDescriptor(), [self = shared_from_this()] { self->onReadable(); });
    isWatched = true;
}

void Link::pause()
{
    if (std::exchange(isWatched, false))
        box.loop.unwatch(channel.getDescriptor());
}

void Link::call(const std::string& method, const std::string& parameters, AnswerHandler onAnswer)
{
    awaited.emplace(channel.call(method, parameters), std::move(onAnswer));
}

void Link::subscribe(AnswerHandler onAnswer)
{
    awaited.emplace(channel.subscribe({"IApplication::*", "IWindow::*"}), std::move(onAnswer));
}

void Link::onReadable()
try {
    pace.update(Pace::Clock::now());
    isOpen = channel.receive();
    deliver();
} catch (const std::exception& error) {
    end(error.what());
}

void Link::onTurnEnd()
try {
    turnTimer = 0;
    tellFlood();
    for (const auto& [name, payload] : pace.renew(Pace::Clock::now()))
        listener.onNotification(uid, name, payload);
    if (isClosed)
        return;
    if (isFlooding)
        awaitTurnEnd();
    if (!isWatched && isOpen)
        watch();
    deliver();
} catch (const std::exception& error) {
    end(error.what());
}

void Link::deliver()
{
    while (!isClosed && !pace.isSpent()) {
        auto message = channel.take();
        if (!message)
            break;
        take(std::move(*message));
    }
    if (isClosed)
        return;
    if (pace.isExceeded())
        awaitTurnEnd();
    if (pace.isSpent() || !isOpen)
        pause();
    // What has been merged, or not been taken yet, comes before the end.
    if (!isOpen && !pace.isExceeded())
        end("the server has closed the connection");
}

void Link::take(Message message)
{
    if (message.notification.empty())
        return answer(message);
    if (pace.count(message.notification, message.payload))
        listener.onNotification(uid, message.notification, message.payload);
}

void Link::answer(const Message& message)
{
    if (auto entry = awaited.extract(message.call))
        entry.mapped()(message.error ? nullptr : &message.payload, message.error ? message.error->what() : "");
}

void Link::awaitTurnEnd()
{
    if (turnTimer == 0)
        turnTimer = box.loop.schedule(Pace::TURN, [self = shared_from_this()] { self->onTurnEnd(); });
}

void Link::tellFlood()
{
    quietTurns = pace.isExceeded() ? 0 : quietTurns + 1;
    if (!isFlooding && quietTurns == 0) {
        isFlooding = true;
        corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "Link", __LINE__,
                          "%s floods: it announces more than %u changes in %d ms, those of its properties are merged\n",
                          uid.c_str(), Pace::PASS_LIMIT, static_cast<int>(Pace::TURN.count()));
    }
    if (!isFlooding || quietTurns < QUIET_TURNS)
        return;
    isFlooding = false;
    corvaneDebugPrint(Corvane::DEBUG_NOTICE, "procmand", "Link", __LINE__,
                      "%s floods no longer: %lu changes of its properties were merged\n", uid.c_str(),
                      pace.countReplaced() - std::exchange(toldReplaced, pace.countReplaced()));
}

void Link::end(const std::string& problem)
{
    if (isClosed)
        return;
    for (const auto& [number, onAnswer] : std::exchange(awaited, {}))
        onAnswer(nullptr, problem);
    // Who hears of it closes the link. Should that fail, it is still watched, or its timer runs again: it ends once
    // more.
    if (!isClosed)
        listener.onLinkEnd(uid);
}

} // namespace Procmand
