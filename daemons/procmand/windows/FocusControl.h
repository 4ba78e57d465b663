#pragma once

#include "box/Box.h"

#include <deque>

namespace Procmand
{

/// Sees to it that one window at most has the input focus.
///
/// A move is made by a worker, one after the other: the old window loses the focus first, then the new one gets it. An
/// old one that cannot be told counts as without focus. A move that fails leaves the focus where it was: the old window
/// gets it back. Guarded by the lock of the box.
class FocusControl
{
public:
    explicit FocusControl(Box& box);

    /// Gives the focus to the window, or takes it away; what comes of it is announced.
    void request(const std::string& uid, bool focus);
    /// A window has announced its focus.
    void onAnnounced(const std::string& uid, bool focus);
    void onGone(const std::string& uid);
    /// The application runs again; it has the focus back that it had when it ended, if nobody has got it since.
    void onReturned(const std::string& uid);
    /// The application will not return.
    void onForgotten(const std::string& uid);
    /// @return the uid of the window that has the focus, empty when none has
    const std::string& getFocused() const { return focused; }
    /// @return how many moves wait or are under way
    std::size_t countMoves() const { return moves.size(); }

private:
    struct Move {
        std::string uid;
        bool focus;
        bool isOwn; ///< the window has taken the focus itself and need not be told
    };

    struct Outcome {
        bool isMade = true;  ///< whether it was tried at all
        bool isLost = false; ///< the old window has lost the focus although the move failed
        std::string problem; ///< empty when it worked
    };

    void startNext();
    void carryOut(const Move& move, const std::string& old);
    void takeFrom(const std::string& uid) const;
    /// @return whether the window has been told
    bool giveBack(const std::string& uid) const;
    void finish(const Move& move, const Outcome& outcome);
    void setFocused(const std::string& uid);

    Box& box;
    std::string focused;
    std::string absent;     ///< who ended with the focus, until somebody gets it
    std::deque<Move> moves; ///< the first one is under way
};

} // namespace Procmand
