#include "box/Notices.h"

namespace Procmand
{

namespace
{

using Corvane::Serializer;

void write(const char* key, const Corvane::ISurfaceCompositing::Rect& value, Serializer& serializer)
{
    value.serialize(key, serializer);
}

template <class T>
void write(const char* key, const T& value, Serializer& serializer)
{
    Corvane::serialize(key, value, serializer);
}

} // namespace

Notices::Notices(Sink sink) : sink(std::move(sink)) {}

void Notices::pass(const std::string& name, const std::string& payload) const
{
    sink(name, payload);
}

template <class Write>
void Notices::announce(const char* name, Write writeFields) const
{
    Serializer serializer;
    serializer.beginObject("");
    writeFields(serializer);
    serializer.endObject("");
    sink(name, serializer.generate());
}

void Notices::onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState) const
{
    announce("IApplication::onStateChange", [&](Serializer& serializer) {
        serializer.writeString("uid", uid);
        serializer.writeString("oldState", oldState);
        serializer.writeString("newState", newState);
    });
}

void Notices::onKeepAlive(const std::string& uid, const std::string& state) const
{
    announce("IApplication::onKeepAlive", [&](Serializer& serializer) {
        serializer.writeString("uid", uid);
        serializer.writeString("state", state);
    });
}

void Notices::onLaunch(const std::string& uid, pid_t pid, const std::string& program, unsigned int restarts) const
{
    announce("IApplicationManager::onLaunch", [&](Serializer& serializer) {
        serializer.writeString("uid", uid);
        serializer.writeInteger("pid", pid);
        serializer.writeString("program", program);
        serializer.writeUnsigned("restarts", restarts);
    });
}

void Notices::onLaunchFailure(const std::string& uid, const std::string& program, const std::string& reason) const
{
    announce("IApplicationManager::onLaunchFailure", [&](Serializer& serializer) {
        serializer.writeString("uid", uid);
        serializer.writeString("program", program);
        serializer.writeString("reason", reason);
    });
}

void Notices::onRegister(const std::string& uid, pid_t pid, const std::string& program) const
{
    announce("IApplicationManager::onRegister", [&](Serializer& serializer) {
        serializer.writeString("uid", uid);
        serializer.writeInteger("pid", pid);
        serializer.writeString("program", program);
    });
}

void Notices::onRunaway(const std::string& uid, pid_t pid) const
{
    announce("IApplicationManager::onRunaway", [&](Serializer& serializer) {
        serializer.writeString("uid", uid);
        serializer.writeInteger("pid", pid);
    });
}

void Notices::onEnd(const EndRecord& end) const
{
    sink("IApplicationManager::onEnd", end.write());
}

void Notices::onStop(const std::string& uid, const std::string& means) const
{
    announce("IApplicationManager::onStop", [&](Serializer& serializer) {
        serializer.writeString("uid", uid);
        serializer.writeString("means", means);
    });
}

void Notices::onStopFailure(const std::string& uid, const std::string& reason) const
{
    announce("IApplicationManager::onStopFailure", [&](Serializer& serializer) {
        serializer.writeString("uid", uid);
        serializer.writeString("reason", reason);
    });
}

void Notices::onRestartDelay(const std::string& uid, std::chrono::milliseconds delay, unsigned int restartsInRow) const
{
    announce("IApplicationManager::onRestartDelay", [&](Serializer& serializer) {
        serializer.writeString("uid", uid);
        serializer.writeUnsigned("delayMs", static_cast<unsigned int>(delay.count()));
        serializer.writeUnsigned("restartsInRow", restartsInRow);
    });
}

void Notices::onRestartLimit(const std::string& uid, unsigned int restartsInRow) const
{
    announce("IApplicationManager::onRestartLimit", [&](Serializer& serializer) {
        serializer.writeString("uid", uid);
        serializer.writeUnsigned("restartsInRow", restartsInRow);
    });
}

void Notices::onFocusMove(const std::string& oldUid, const std::string& uid) const
{
    announce("IWindowCompositing::onFocusMove", [&](Serializer& serializer) {
        serializer.writeString("oldUid", oldUid);
        serializer.writeString("uid", uid);
    });
}

void Notices::onFocusFailure(const std::string& uid, const std::string& reason) const
{
    announce("IWindowCompositing::onFocusFailure", [&](Serializer& serializer) {
        serializer.writeString("uid", uid);
        serializer.writeString("reason", reason);
    });
}

void Notices::onWindowGrant(const WindowState& window) const
{
    announce("IWindowCompositing::onWindowGrant", [&](Serializer& serializer) { window.serialize(serializer); });
}

void Notices::onWindowRelease(const WindowState& window) const
{
    announce("IWindowCompositing::onWindowRelease", [&](Serializer& serializer) {
        serializer.writeUnsigned("index", window.index);
        serializer.writeString("uid", window.uid);
    });
}

template <class T>
void Notices::announceChange(const char* name, const WindowState& window, const char* oldKey, const T& oldValue,
                             const char* newKey, const T& newValue) const
{
    announce(name, [&](Serializer& serializer) {
        serializer.writeString("uid", window.uid);
        serializer.writeUnsigned("index", window.index);
        write(oldKey, oldValue, serializer);
        write(newKey, newValue, serializer);
    });
}

void Notices::onWindowChange(const WindowState& before, const WindowState& now) const
{
    if (before.visibility != now.visibility)
        announceChange("IWindowCompositing::onVisibilityChange", now, "oldVisibility", before.visibility,
                       "newVisibility", now.visibility);
    if (before.opacity != now.opacity)
        announceChange("IWindowCompositing::onOpacityChange", now, "oldOpacity", before.opacity, "newOpacity",
                       now.opacity);
    if (before.zOrder != now.zOrder)
        announceChange("IWindowCompositing::onZOrderChange", now, "oldZOrder", before.zOrder, "newZOrder", now.zOrder);
    if (before.location.serialize() != now.location.serialize())
        announceChange("IWindowCompositing::onLocationChange", now, "oldLocation", before.location, "newLocation",
                       now.location);
}

void Notices::onScreenshot(const std::string& file) const
{
    announce("IWindowCompositing::onScreenshot", [&](Serializer& serializer) { serializer.writeString("file", file); });
}

void Notices::onScreenshotFailure(const std::string& file, const std::string& reason) const
{
    announce("IWindowCompositing::onScreenshotFailure", [&](Serializer& serializer) {
        serializer.writeString("file", file);
        serializer.writeString("reason", reason);
    });
}

} // namespace Procmand
