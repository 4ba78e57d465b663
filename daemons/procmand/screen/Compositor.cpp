#include "screen/Compositor.h"

#include <stdexcept>

#ifdef CORVANE_WITH_DIRECTFB
#include "screen/CompositorCheck.h"
#include "screen/CompositorDirectFB.h"
#include "screen/CompositorThread.h"
#endif

namespace Procmand
{

namespace
{

#ifdef CORVANE_WITH_DIRECTFB
constexpr const char* NO_PICTURE =
    "the windows are kept in memory only: corvane-procmand runs with --compositor=memory";
#else
constexpr const char* NO_PICTURE = "corvane-procmand is built without a compositor that can be looked at";
#endif

/// The box's window stack is all there is; nobody sees it.
class MemoryCompositor : public ICompositor
{
public:
    void setWindows(const std::vector<WindowState>&) override {}
    void setFocused(const std::string&) override {}
    void screenshot(const std::string&, Answer) override { throw std::runtime_error(NO_PICTURE); }
};

} // namespace

std::vector<std::string> listCompositors()
{
#ifdef CORVANE_WITH_DIRECTFB
    return {"directfb", "memory"};
#else
    return {"memory"};
#endif
}

std::unique_ptr<ICompositor> makeCompositor([[maybe_unused]] const std::string& name)
{
#ifdef CORVANE_WITH_DIRECTFB
    if (name == "directfb")
        return std::make_unique<CompositorThread>([] {
            requireDirectFB();
            return openDirectFBScreen(DirectFBTalk::NONE);
        });
#endif
    return std::make_unique<MemoryCompositor>();
}

} // namespace Procmand
