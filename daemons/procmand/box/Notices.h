#pragma once

#include "history/EndRecord.h"
#include "screen/WindowStack.h"

#include <chrono>
#include <corvane/foundation/Serializer.h>
#include <functional>
#include <string>

namespace Procmand
{

/// What the process manager announces of its own. Each operation is one notification of the same name.
class Notices
{
public:
    /// @param name  of the notification; and its payload
    using Sink = std::function<void(const std::string& name, const std::string& payload)>;

    /// The sink must be safe to be called from the threads that announce something.
    explicit Notices(Sink sink);

    /// Passes an application's own notification on as it is.
    void pass(const std::string& name, const std::string& payload) const;
    /// Announces in an application's name what it could not tell itself.
    void onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState) const;
    void onKeepAlive(const std::string& uid, const std::string& state) const;

    void onLaunch(const std::string& uid, pid_t pid, const std::string& program, unsigned int restarts) const;
    void onLaunchFailure(const std::string& uid, const std::string& program, const std::string& reason) const;
    void onRegister(const std::string& uid, pid_t pid, const std::string& program) const;
    void onRunaway(const std::string& uid, pid_t pid) const;
    void onEnd(const EndRecord& end) const;
    void onStop(const std::string& uid, const std::string& means) const;
    void onStopFailure(const std::string& uid, const std::string& reason) const;
    void onRestartDelay(const std::string& uid, std::chrono::milliseconds delay, unsigned int restartsInRow) const;
    void onRestartLimit(const std::string& uid, unsigned int restartsInRow) const;

    /// @param uid  empty for nobody
    void onFocusMove(const std::string& oldUid, const std::string& uid) const;
    void onFocusFailure(const std::string& uid, const std::string& reason) const;
    void onWindowGrant(const WindowState& window) const;
    void onWindowRelease(const WindowState& window) const;
    /// The differences between two states of one window, each in its own notification.
    void onWindowChange(const WindowState& before, const WindowState& now) const;
    void onScreenshot(const std::string& file) const;
    void onScreenshotFailure(const std::string& file, const std::string& reason) const;

private:
    template <class Write>
    void announce(const char* name, Write write) const;
    template <class T>
    void announceChange(const char* name, const WindowState& window, const char* oldKey, const T& oldValue,
                        const char* newKey, const T& newValue) const;

    const Sink sink;
};

} // namespace Procmand
