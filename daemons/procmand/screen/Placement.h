#pragma once

#include "screen/WindowStack.h"

#include <optional>

namespace Procmand
{

/// Where an application's window was, for the application's next process.
struct Placement {
    WindowState window;
    std::vector<std::string> front; ///< the uids of the windows in front of it that have the same z-order

    /// @param windows  from the back to the front
    /// @return the place of the application's window, of several its oldest; none when it has no window
    static std::optional<Placement> find(const std::vector<WindowState>& windows, const std::string& uid);

    /// @return the settings, but with place, opacity and z-order of the window. Whether it is visible is the
    /// application's to say: what it was hidden for is over with its process.
    Corvane::ISurfaceManagement::CreationSettings
    apply(const Corvane::ISurfaceManagement::CreationSettings& settings) const;

    void serialize(const std::string& key, Corvane::Serializer& serializer) const;
    /// Reads the deserializer's current object.
    explicit Placement(Corvane::Deserializer& deserializer);
    explicit Placement(WindowState window) : window(std::move(window)) {}
};

} // namespace Procmand
