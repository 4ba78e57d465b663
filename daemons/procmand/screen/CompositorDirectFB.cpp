#include "screen/CompositorDirectFB.h"

#include "screen/CompositorLayout.h"
#include "screen/CompositorPicture.h"

#include <algorithm>
#include <corvane/foundation/DebugPrint.h>
#include <directfb.h>
#include <map>
#include <stdexcept>

namespace Procmand
{

namespace
{

constexpr DFBColor BACKGROUND{.a = 0xFF, .r = 0x10, .g = 0x18, .b = 0x20};
constexpr DFBColor FRAME{.a = 0xFF, .r = 0xFF, .g = 0xC0, .b = 0x20};
constexpr int FRAME_WIDTH = 4;
constexpr int TEXT_HEIGHT = 16;
constexpr int LINE_HEIGHT = 20;
constexpr int TEXT_MARGIN = 8;

/// DirectFB's interfaces are released, not deleted.
struct Release {
    template <class Interface>
    void operator()(Interface* released) const
    {
        released->Release(released);
    }
};
template <class Interface>
using Owned = std::unique_ptr<Interface, Release>;

void check(DFBResult result, const char* call)
{
    if (result != DFB_OK)
        throw std::runtime_error(std::string("DirectFB: ") + call + ": " + DirectFBErrorString(result));
}

Owned<IDirectFBSurface> surfaceOf(IDirectFBWindow* window)
{
    IDirectFBSurface* surface = nullptr;
    check(window->GetSurface(window, &surface), "GetSurface");
    return Owned<IDirectFBSurface>(surface);
}

/// A window of DirectFB that stands for one of the box.
class Pane
{
public:
    Pane(IDirectFBDisplayLayer* layer, const Area& part)
    {
        DFBWindowDescription description{};
        description.flags = static_cast<DFBWindowDescriptionFlags>(DWDESC_WIDTH | DWDESC_HEIGHT | DWDESC_POSX |
                                                                   DWDESC_POSY | DWDESC_OPTIONS);
        description.posx = part.x;
        description.posy = part.y;
        description.width = static_cast<unsigned int>(part.width);
        description.height = static_cast<unsigned int>(part.height);
        description.options = DWOP_GHOST; // input is not DirectFB's affair
        IDirectFBWindow* created = nullptr;
        check(layer->CreateWindow(layer, &description, &created), "CreateWindow");
        window.reset(created);
        drawn.part = part;
    }

    bool hasSize(const Area& part) const { return drawn.part.width == part.width && drawn.part.height == part.height; }

    /// Makes it look like this, which has its size. @param font  may be null
    void show(const ShownWindow& wanted, IDirectFBFont* font)
    {
        if (drawn.part.x != wanted.part.x || drawn.part.y != wanted.part.y)
            check(window->MoveTo(window.get(), wanted.part.x, wanted.part.y), "MoveTo");
        if (isNew || drawn.whole != wanted.whole || drawn.hasFocus != wanted.hasFocus)
            paint(wanted, font);
        if (isNew || drawn.opacity != wanted.opacity)
            check(window->SetOpacity(window.get(), wanted.opacity), "SetOpacity");
        drawn = wanted;
        isNew = false;
    }

    void lowerToBottom() { check(window->LowerToBottom(window.get()), "LowerToBottom"); }
    void putAtop(const Pane& lower) { check(window->PutAtop(window.get(), lower.window.get()), "PutAtop"); }

private:
    void paint(const ShownWindow& wanted, IDirectFBFont* font)
    {
        const Owned<IDirectFBSurface> owned = surfaceOf(window.get());
        IDirectFBSurface* const surface = owned.get();
        const Colour colour = colourOf(wanted.uid);
        check(surface->Clear(surface, colour.red, colour.green, colour.blue, 0xFF), "Clear");
        const Area& whole = wanted.whole;
        if (font != nullptr)
            write(wanted, surface, font);
        if (wanted.hasFocus) {
            check(surface->SetColor(surface, FRAME.r, FRAME.g, FRAME.b, FRAME.a), "SetColor");
            for (int i = 0; i < FRAME_WIDTH && 2 * i < whole.width && 2 * i < whole.height; ++i)
                check(surface->DrawRectangle(surface, whole.x + i, whole.y + i, whole.width - 2 * i,
                                             whole.height - 2 * i),
                      "DrawRectangle");
        }
        check(surface->Flip(surface, nullptr, DSFLIP_NONE), "Flip");
    }

    static void write(const ShownWindow& wanted, IDirectFBSurface* surface, IDirectFBFont* font)
    {
        check(surface->SetFont(surface, font), "SetFont");
        check(surface->SetColor(surface, 0xFF, 0xFF, 0xFF, 0xFF), "SetColor");
        int y = wanted.whole.y + TEXT_MARGIN;
        for (const std::string& line : {wanted.label, wanted.uid}) {
            check(surface->DrawString(surface, line.c_str(), -1, wanted.whole.x + TEXT_MARGIN, y, DSTF_TOPLEFT),
                  "DrawString");
            y += LINE_HEIGHT;
        }
    }

    Owned<IDirectFBWindow> window;
    ShownWindow drawn;
    bool isNew = true;
};

class DirectFBScreen : public IScreen
{
public:
    explicit DirectFBScreen(DirectFBTalk talk);

    void show(const Scene& scene) override;
    void save(const std::string& file) override;

private:
    void start(DirectFBTalk talk);
    void openLayer();
    void loadFont();
    Pane& paneOf(const ShownWindow& window);
    void stack(const std::vector<ShownWindow>& windows);

    Owned<IDirectFB> dfb;
    Owned<IDirectFBDisplayLayer> layer;
    Owned<IDirectFBFont> font; ///< null where it is not installed
    int width = 0;
    int height = 0;
    std::map<unsigned int, Pane> panes;
    std::vector<unsigned int> order; ///< of the panes, from the back to the front
};

DirectFBScreen::DirectFBScreen(DirectFBTalk talk)
{
    start(talk);
    openLayer();
    loadFont();
}

void DirectFBScreen::start(DirectFBTalk talk)
{
    // Its options come from DFBARGS and its files alone; without a command line it would look for ours.
    char name[] = "corvane-procmand";
    char* words[] = {name, nullptr};
    char** arguments = words;
    int count = 1;
    check(DirectFBInit(&count, &arguments), "DirectFBInit");
    // The process manager handles its signals itself; input and the mouse pointer belong to the applications.
    for (const char* option : {"no-sighandler", "no-banner", "no-cursor"})
        check(DirectFBSetOption(option, nullptr), option);
    if (talk == DirectFBTalk::NONE)
        check(DirectFBSetOption("quiet", nullptr), "quiet");
    check(DirectFBSetOption("disable-module", "linux_input"), "disable-module");
    IDirectFB* created = nullptr;
    check(DirectFBCreate(&created), "DirectFBCreate");
    dfb.reset(created);
}

void DirectFBScreen::openLayer()
{
    IDirectFBDisplayLayer* primary = nullptr;
    check(dfb->GetDisplayLayer(dfb.get(), DLID_PRIMARY, &primary), "GetDisplayLayer");
    layer.reset(primary);
    check(layer->SetCooperativeLevel(layer.get(), DLSCL_ADMINISTRATIVE), "SetCooperativeLevel");
    check(layer->SetBackgroundColor(layer.get(), BACKGROUND.r, BACKGROUND.g, BACKGROUND.b, BACKGROUND.a),
          "SetBackgroundColor");
    check(layer->SetBackgroundMode(layer.get(), DLBM_COLOR), "SetBackgroundMode");
    DFBDisplayLayerConfig config{};
    check(layer->GetConfiguration(layer.get(), &config), "GetConfiguration");
    width = config.width;
    height = config.height;
}

void DirectFBScreen::loadFont()
{
    DFBFontDescription description{};
    description.flags = DFDESC_HEIGHT;
    description.height = TEXT_HEIGHT;
    IDirectFBFont* created = nullptr;
    if (dfb->CreateFont(dfb.get(), CORVANE_DIRECTFB_FONT, &description, &created) == DFB_OK)
        font.reset(created);
    else
        Corvane::corvaneDebugPrint(Corvane::DEBUG_WARNING, "procmand", "Compositor", __LINE__,
                                   "windows are drawn without their names: no font %s\n", CORVANE_DIRECTFB_FONT);
}

void DirectFBScreen::show(const Scene& scene)
{
    const std::vector<ShownWindow> windows = layOut(scene, width, height);
    // A pane of another size is made anew: after Resize, DirectFB now and then leaves parts of it out.
    std::erase_if(panes, [&windows](const auto& pane) {
        return std::none_of(windows.begin(), windows.end(), [&pane](const ShownWindow& window) {
            return window.index == pane.first && pane.second.hasSize(window.part);
        });
    });
    for (const ShownWindow& window : windows)
        paneOf(window).show(window, font.get());
    stack(windows);
}

Pane& DirectFBScreen::paneOf(const ShownWindow& window)
{
    const auto [pane, isNew] = panes.try_emplace(window.index, layer.get(), window.part);
    if (isNew)
        order.clear(); // it is in front of all others
    return pane->second;
}

void DirectFBScreen::stack(const std::vector<ShownWindow>& windows)
{
    std::vector<unsigned int> wanted;
    for (const ShownWindow& window : windows)
        wanted.push_back(window.index);
    if (wanted == order)
        return;
    order.clear(); // should one of the operations fail, all are made again
    for (std::size_t i = 0; i < wanted.size(); ++i)
        if (i == 0)
            panes.at(wanted[i]).lowerToBottom();
        else
            panes.at(wanted[i]).putAtop(panes.at(wanted[i - 1]));
    order = wanted;
}

void DirectFBScreen::save(const std::string& file)
{
    IDirectFBSurface* created = nullptr;
    check(layer->GetSurface(layer.get(), &created), "GetSurface");
    const Owned<IDirectFBSurface> shown(created);

    // A copy in a format that PNG has, whatever the layer's is.
    DFBSurfaceDescription description{};
    description.flags = static_cast<DFBSurfaceDescriptionFlags>(DSDESC_WIDTH | DSDESC_HEIGHT | DSDESC_PIXELFORMAT);
    description.width = width;
    description.height = height;
    description.pixelformat = DSPF_ARGB;
    check(dfb->CreateSurface(dfb.get(), &description, &created), "CreateSurface");
    const Owned<IDirectFBSurface> copy(created);
    check(copy->Blit(copy.get(), shown.get(), nullptr, 0, 0), "Blit");

    Picture picture(width, height);
    const DFBRectangle_C whole{0, 0, width, height};
    check(copy->Read(copy.get(), &whole, picture.pixels.data(), width * 4), "Read");
    picture.save(file);
}

} // namespace

std::unique_ptr<IScreen> openDirectFBScreen(DirectFBTalk talk)
{
    return std::make_unique<DirectFBScreen>(talk);
}

} // namespace Procmand
