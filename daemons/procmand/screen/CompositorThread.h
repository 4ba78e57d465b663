#pragma once

#include "screen/Compositor.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace Procmand
{

/// What a scene can be drawn on. Used by one thread only, the one that opened it.
class IScreen
{
public:
    virtual ~IScreen() = default;

    /// Shows the scene in the place of the last one. @throws std::exception
    virtual void show(const Scene& scene) = 0;
    /// Saves what is shown as a PNG file, whole or not at all. @throws std::exception
    virtual void save(const std::string& file) = 0;
};

/// A compositor that draws on a thread of its own, which also opens and closes the screen.
///
/// Only the latest scene is drawn; a screenshot shows at least what was set before it was asked for. Where the screen
/// cannot be opened, the log says why, and so does the answer to each screenshot.
class CompositorThread : public ICompositor
{
public:
    /// @param open  opens the screen; @throws std::exception where it cannot
    using Open = std::function<std::unique_ptr<IScreen>()>;

    explicit CompositorThread(Open open);
    /// Screenshots that were asked for are taken first.
    ~CompositorThread() override;
    CompositorThread(const CompositorThread&) = delete;
    CompositorThread& operator=(const CompositorThread&) = delete;

    void setWindows(const std::vector<WindowState>& windows) override;
    void setFocused(const std::string& uid) override;
    void screenshot(const std::string& file, Answer answer) override;

private:
    struct Screenshot {
        std::string file;
        Answer answer;
    };
    struct Work {
        Scene scene;
        bool isNew = false; ///< whether the scene is another one than that of the last work
        std::deque<Screenshot> screenshots;
        bool isLast = false;
    };

    void run(const Open& open);
    Work awaitWork();
    void draw(IScreen* screen, const Work& work);
    std::string save(IScreen* screen, const std::string& file) const;

    std::mutex mutex; ///< guards `next`
    std::condition_variable changed;
    Work next;
    std::string problem; ///< the thread's own: what went wrong with the screen last
    /// Last, so that everything else is there when it starts.
    std::thread thread;
};

} // namespace Procmand
