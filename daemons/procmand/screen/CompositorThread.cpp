#include "screen/CompositorThread.h"

#include <corvane/foundation/DebugPrint.h>
#include <exception>

namespace Procmand
{

namespace
{

void log(const char* words, const std::string& problem)
{
    Corvane::corvaneDebugPrint(Corvane::DEBUG_ERROR, "procmand", "Compositor", __LINE__, "%s: %s\n", words,
                               problem.c_str());
}

} // namespace

CompositorThread::CompositorThread(Open open) : thread([this, open = std::move(open)] { run(open); }) {}

CompositorThread::~CompositorThread()
{
    {
        std::lock_guard guard(mutex);
        next.isLast = true;
    }
    changed.notify_one();
    thread.join();
}

void CompositorThread::setWindows(const std::vector<WindowState>& windows)
{
    {
        std::lock_guard guard(mutex);
        next.scene.windows = windows;
        next.isNew = true;
    }
    changed.notify_one();
}

void CompositorThread::setFocused(const std::string& uid)
{
    {
        std::lock_guard guard(mutex);
        next.scene.focused = uid;
        next.isNew = true;
    }
    changed.notify_one();
}

void CompositorThread::screenshot(const std::string& file, Answer answer)
{
    {
        std::lock_guard guard(mutex);
        next.screenshots.push_back({file, std::move(answer)});
    }
    changed.notify_one();
}

void CompositorThread::run(const Open& open)
{
    std::unique_ptr<IScreen> screen;
    try {
        screen = open();
    } catch (const std::exception& error) {
        problem = error.what();
        log("the windows are kept in memory only", problem);
    }
    for (bool isLast = false; !isLast;) {
        const Work work = awaitWork();
        if (work.isNew)
            draw(screen.get(), work);
        for (const Screenshot& screenshot : work.screenshots)
            screenshot.answer(save(screen.get(), screenshot.file));
        isLast = work.isLast;
    }
}

CompositorThread::Work CompositorThread::awaitWork()
{
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return next.isNew || next.isLast || !next.screenshots.empty(); });
    Work work = next;
    next.isNew = false;
    next.screenshots.clear();
    return work;
}

void CompositorThread::draw(IScreen* screen, const Work& work)
{
    if (screen == nullptr)
        return;
    try {
        screen->show(work.scene);
        problem.clear();
    } catch (const std::exception& error) {
        // A window that fades fails the same way many times.
        if (problem != error.what())
            log("the windows cannot be drawn", error.what());
        problem = error.what();
    }
}

std::string CompositorThread::save(IScreen* screen, const std::string& file) const
{
    if (!problem.empty())
        return "nothing is drawn: " + problem;
    try {
        screen->save(file);
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}

} // namespace Procmand
