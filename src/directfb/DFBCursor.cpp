#include <corvane/DFBCursor.h>

#include <corvane/Foundation.h>
#include <directfb.h>

namespace Corvane
{

namespace
{

constexpr const char* TAG = "DFBCursor";

constexpr const char* CURSOR_FILE = "/usr/local/etc/cursor.png";

/// Where in the picture the pointer points, from its top-left corner.
constexpr int HOT_SPOT_X = 3;
constexpr int HOT_SPOT_Y = 3;

constexpr unsigned int OPAQUE = 255;

/// The source lines that failures are reported under. Deliberate: fixed numbers, whatever line a call stands on,
/// because the log analysis of the boxes finds a report by tag and line; of init()'s failures most have one message,
/// and only the line tells them apart.
enum Line : int {
    CREATE_IMAGE_PROVIDER_LINE = 68,
    GET_SURFACE_DESCRIPTION_LINE = 73,
    CREATE_SURFACE_LINE = 80,
    RENDER_LINE = 85,
    RELEASE_PROVIDER_LINE = 90,
    SET_SHAPE_LINE = 95,
    SET_FIRST_OPACITY_LINE = 100,
    RELEASE_SOURCE_LINE = 111,
    RELEASE_SURFACE_LINE = 115,
    VISIBILITY_STATE_LINE = 148,
    SET_VISIBILITY_LINE = 153,
    OPACITY_STATE_LINE = 173,
    SET_OPACITY_LINE = 178,
    WARP_STATE_LINE = 198,
    WARP_POSITION_LINE = 204,
    WARP_LINE = 209,
    LOCATION_STATE_LINE = 221,
    LOCATION_POSITION_LINE = 229,
    LOCATION_SIZE_LINE = 233
};

constexpr char INVALID_STATE[] = "%s() invalid state!\n";
constexpr char SHAPE_FAILED[] = "%s: IDirectFBDisplayLayer::SetCursorShape failed!\n";
constexpr char OPACITY_FAILED[] = "%s: IDirectFBDisplayLayer::SetCursorOpacity failed!\n";
constexpr char POSITION_FAILED[] = "%s() IDirectFBDisplayLayer::GetCursorPosition failed!\n";

void report(Line line, const char* format, const char* function)
{
    corvaneDebugPrint(DEBUG_ERROR, TAG, TAG, line, format, function);
}

void requireState(bool valid, Line line, const char* function)
{
    if (valid)
        return;
    report(line, INVALID_STATE, function);
    throw Exception(RETURN_INVALID_STATE);
}

/// Takes the result of a call of DirectFB. DFBResult and DirectResult have their values in common.
void requireSuccess(int result, Line line, const char* format, const char* function)
{
    if (result == DFB_OK)
        return;
    report(line, format, function);
    throw Exception(RETURN_REFUSED_BY_SYSTEM);
}

/// The layer's opacity for a pointer: DirectFB knows 8 bits, and hides a pointer by the opacity 0.
u8 layerOpacity(bool visible, unsigned int opacity)
{
    return static_cast<u8>(visible ? opacity & 0xFF : 0);
}

} // namespace

DFBCursor::DFBCursor(IDirectFB* dfb, IDirectFBDisplayLayer* layer, bool visible)
    : dfb(dfb), layer(layer), surface(nullptr), cursorState(CURSOR_STATE_NORMAL), visible(visible), opacity(OPAQUE)
{
}

DFBCursor::~DFBCursor()
{
    if (surface == nullptr)
        return;
    if (surface->ReleaseSource(surface) != DFB_OK)
        report(RELEASE_SOURCE_LINE, "%s: IDirectFBSurface::ReleaseSource failed!\n", __func__);
    if (surface->Release(surface) != DR_OK)
        report(RELEASE_SURFACE_LINE, "%s: IDirectFBSurface::Release failed!\n", __func__);
    surface = nullptr;
}

// Deliberate: every failure up to the shape has the message of the shape, the only one that the log analysis knows; and
// the image provider stays unreleased when a step between its creation and its release fails.
void DFBCursor::init()
{
    IDirectFBImageProvider* provider = nullptr;
    requireSuccess(dfb->CreateImageProvider(dfb, CURSOR_FILE, &provider), CREATE_IMAGE_PROVIDER_LINE, SHAPE_FAILED,
                   __func__);
    DFBSurfaceDescription description;
    requireSuccess(provider->GetSurfaceDescription(provider, &description), GET_SURFACE_DESCRIPTION_LINE, SHAPE_FAILED,
                   __func__);
    // The picture's size but not its pixel format.
    description.flags = static_cast<DFBSurfaceDescriptionFlags>(DSDESC_CAPS | DSDESC_WIDTH | DSDESC_HEIGHT);
    description.caps = DSCAPS_VIDEOONLY;
    IDirectFBSurface* created = nullptr; // DirectFB may write to it also when it fails
    requireSuccess(dfb->CreateSurface(dfb, &description, &created), CREATE_SURFACE_LINE, SHAPE_FAILED, __func__);
    surface = created;
    requireSuccess(provider->RenderTo(provider, surface, nullptr), RENDER_LINE, SHAPE_FAILED, __func__);
    requireSuccess(provider->Release(provider), RELEASE_PROVIDER_LINE,
                   "%s: Failure releasing IDirectFBImageProvider!\n", __func__);
    requireSuccess(layer->SetCursorShape(layer, surface, HOT_SPOT_X, HOT_SPOT_Y), SET_SHAPE_LINE, SHAPE_FAILED,
                   __func__);
    requireSuccess(layer->SetCursorOpacity(layer, layerOpacity(visible, opacity)), SET_FIRST_OPACITY_LINE,
                   OPACITY_FAILED, __func__);
}

void DFBCursor::setVisibility(const unsigned int&, bool visibility)
{
    requireState(layer != nullptr, VISIBILITY_STATE_LINE, __func__);
    if (visibility == visible)
        return;
    requireSuccess(layer->SetCursorOpacity(layer, layerOpacity(visibility, opacity)), SET_VISIBILITY_LINE,
                   OPACITY_FAILED, __func__);
    visible = visibility;
}

bool DFBCursor::getVisibility(const unsigned int&)
{
    return visible;
}

void DFBCursor::setOpacity(const unsigned int&, unsigned int newOpacity)
{
    requireState(layer != nullptr, OPACITY_STATE_LINE, __func__);
    if (newOpacity == opacity)
        return;
    requireSuccess(layer->SetCursorOpacity(layer, layerOpacity(visible, newOpacity)), SET_OPACITY_LINE, OPACITY_FAILED,
                   __func__);
    opacity = newOpacity;
}

unsigned int DFBCursor::getOpacity(const unsigned int&)
{
    return opacity;
}

void DFBCursor::setLocation(const unsigned int&, const Rect& location)
{
    requireState(layer != nullptr, WARP_STATE_LINE, __func__);
    int x = 0;
    int y = 0;
    requireSuccess(layer->GetCursorPosition(layer, &x, &y), WARP_POSITION_LINE, POSITION_FAILED, __func__);
    if (location.getX() == x && location.getY() == y)
        return;
    requireSuccess(layer->WarpCursor(layer, location.getX(), location.getY()), WARP_LINE,
                   "%s() IDirectFBDisplayLayer::WarpCursor failed!\n", __func__);
}

ISurfaceCompositing::Rect DFBCursor::getLocation(const unsigned int&)
{
    requireState(layer != nullptr && surface != nullptr, LOCATION_STATE_LINE, __func__);
    int x = 0;
    int y = 0;
    requireSuccess(layer->GetCursorPosition(layer, &x, &y), LOCATION_POSITION_LINE, POSITION_FAILED, __func__);
    int width = 0;
    int height = 0;
    requireSuccess(surface->GetSize(surface, &width, &height), LOCATION_SIZE_LINE,
                   "%s() IDirectFBSurface::GetSize failed!\n", __func__);
    return {x, y, static_cast<unsigned int>(width), static_cast<unsigned int>(height)};
}

void DFBCursor::setZOrder(const unsigned int&, unsigned int)
{
    throw Exception(RETURN_NOT_SUPPORTED);
}

unsigned int DFBCursor::getZOrder(const unsigned int&)
{
    throw Exception(RETURN_NOT_SUPPORTED);
}

void DFBCursor::bringToFront(const unsigned int&)
{
    throw Exception(RETURN_NOT_SUPPORTED);
}

void DFBCursor::sendToBack(const unsigned int&)
{
    throw Exception(RETURN_NOT_SUPPORTED);
}

void DFBCursor::bringForward(const unsigned int&)
{
    throw Exception(RETURN_NOT_SUPPORTED);
}

void DFBCursor::sendBackward(const unsigned int&)
{
    throw Exception(RETURN_NOT_SUPPORTED);
}

bool DFBCursor::isCursorGlobal()
{
    return false;
}

void DFBCursor::setCursorState(const CursorState& state)
{
    cursorState = state;
}

ICursor::CursorState DFBCursor::getCursorState()
{
    return cursorState;
}

} // namespace Corvane
