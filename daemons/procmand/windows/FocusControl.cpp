#include "windows/FocusControl.h"

#include "box/Containment.h"
#include "box/ServerSocket.h"

#include <corvane/common/RPCClient.h>
#include <corvane/foundation/DebugPrint.h>

namespace Procmand
{

namespace
{

/// @return whether a window says that it has the focus
bool ask(const std::string& uid, Settings::Duration deadline)
{
    return Corvane::RPCClient(serverNameOf(uid)).call("IWindow::isFocused", "{}", deadline) == "true";
}

/// Tells a window that it has the focus, or has lost it.
void tell(const std::string& uid, bool focus, Settings::Duration deadline)
{
    Corvane::RPCClient(serverNameOf(uid))
        .call("IWindow::handleFocus", focus ? R"({"obtained":true})" : R"({"obtained":false})", deadline);
}

} // namespace

FocusControl::FocusControl(Box& box) : box(box) {}

void FocusControl::request(const std::string& uid, bool focus)
{
    if (focus)
        absent.clear();
    moves.push_back({.uid = uid, .focus = focus, .isOwn = false});
    if (moves.size() == 1)
        startNext();
}

void FocusControl::onAnnounced(const std::string& uid, bool focus)
{
    // While a move is under way, what it brings about is announced.
    if (!moves.empty() || focus == (uid == focused))
        return;
    if (!focus)
        return setFocused("");
    moves.push_back({.uid = uid, .focus = true, .isOwn = true});
    startNext();
}

void FocusControl::onGone(const std::string& uid)
{
    if (uid != focused)
        return;
    setFocused("");
    absent = uid;
}

void FocusControl::onReturned(const std::string& uid)
{
    // A move that is under way is somebody's decision as well.
    if (uid == absent && moves.empty())
        request(uid, true);
}

void FocusControl::onForgotten(const std::string& uid)
{
    if (uid == absent)
        absent.clear();
}

void FocusControl::startNext()
{
    const Move& move = moves.front();
    const std::string old = move.focus && focused != move.uid ? focused : std::string();
    box.workers.run([this, move, old] { carryOut(move, old); });
}

void FocusControl::carryOut(const Move& move, const std::string& old)
{
    const Settings::Duration deadline = box.settings.callDeadline;
    Outcome outcome;
    bool isTaken = false;
    try {
        // A window that has taken the focus itself is asked first: it may have lost it again since it announced that.
        outcome.isMade = !move.isOwn || ask(move.uid, deadline);
        isTaken = outcome.isMade && !old.empty();
        if (isTaken)
            takeFrom(old);
        if (outcome.isMade && !move.isOwn)
            tell(move.uid, move.focus, deadline);
    } catch (const std::exception& error) {
        insist([&] { outcome.problem = error.what(); });
        outcome.isLost = isTaken && !giveBack(old);
    }
    insist([&] { box.loop.post([this, move, outcome] { finish(move, outcome); }); });
}

bool FocusControl::giveBack(const std::string& uid) const
{
    try {
        tell(uid, true, box.settings.callDeadline);
        return true;
    } catch (const std::exception&) {
        return false; // it counts as without focus
    }
}

void FocusControl::takeFrom(const std::string& uid) const
{
    try {
        tell(uid, false, box.settings.callDeadline);
    } catch (const std::exception& error) {
        Corvane::corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "FocusControl", __LINE__,
                                   "%s cannot be told that it loses the focus: %s\n", uid.c_str(), error.what());
    }
}

void FocusControl::finish(const Move& move, const Outcome& outcome)
{
    if (!outcome.problem.empty()) {
        // Nothing has moved, unless the old window could not be told that it keeps the focus.
        if (outcome.isLost && !focused.empty())
            setFocused("");
        box.notices.onFocusFailure(move.uid, outcome.problem);
    } else if (outcome.isMade && (move.focus || move.uid == focused)) {
        // One that ended meanwhile has nothing.
        const ManagedApplication* const application = box.registry.find(move.uid);
        setFocused(move.focus && application != nullptr && application->isAlive() ? move.uid : "");
    } else if (!move.focus) {
        box.notices.onFocusMove(move.uid, focused); // it had none, and was told so
    }
    moves.pop_front();
    if (!moves.empty())
        startNext();
}

void FocusControl::setFocused(const std::string& uid)
{
    const std::string old = std::exchange(focused, uid);
    absent.clear();
    box.compositor->setFocused(uid);
    box.notices.onFocusMove(old, uid);
}

} // namespace Procmand
