#pragma once

#include "screen/WindowStack.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Procmand
{

/// What is to be seen on the screen of the box.
struct Scene {
    std::vector<WindowState> windows; ///< from the back to the front
    std::string focused;              ///< uid of the application whose window has the focus, empty for none
};

/// Shows the windows of the box. No operation waits. Guarded by the lock of the box.
class ICompositor
{
public:
    /// Takes what came of a screenshot: why there is none, or nothing when the file is complete. Called on a thread of
    /// the compositor, which holds no lock.
    using Answer = std::function<void(const std::string& problem)>;

    virtual ~ICompositor() = default;

    virtual void setWindows(const std::vector<WindowState>& windows) = 0;
    virtual void setFocused(const std::string& uid) = 0;
    /// Begins to save what has been set so far as a PNG file.
    /// @throws std::runtime_error  this compositor cannot be looked at
    virtual void screenshot(const std::string& file, Answer answer) = 0;
};

/// The names of the compositors that this program has; the first one is the one to take when nothing is said.
std::vector<std::string> listCompositors();

/// @param name  one of `listCompositors()`
std::unique_ptr<ICompositor> makeCompositor(const std::string& name);

} // namespace Procmand
