#pragma once

#include <corvane/interfaces/ICursor.h>

struct _IDirectFB;
struct _IDirectFBDisplayLayer;
struct _IDirectFBSurface;
typedef struct _IDirectFB IDirectFB;
typedef struct _IDirectFBDisplayLayer IDirectFBDisplayLayer;
typedef struct _IDirectFBSurface IDirectFBSurface;

namespace Corvane
{

/// The mouse pointer of a DirectFB display layer, with the picture of the file /usr/local/etc/cursor.png.
///
/// An application that draws with DirectFB creates it, keeps it, and stores it in the `cursor` member of its Window. It
/// needs the layer at the cooperative level DLSCL_ADMINISTRATIVE, and calls the layer's EnableCursor itself: without
/// that nothing is drawn. Not synchronised: the caller serialises the calls on one cursor.
///
/// Every session index is ignored. A call that DirectFB refuses is reported in one debug line and thrown as code 7; a
/// cursor without a layer throws code 2. What DirectFB has not accepted is not stored.
///
///     DFBCursor pointer(dfb, layer, true);
///     pointer.init();
///     layer->EnableCursor(layer, 1);
class CORVANE_EXPORT DFBCursor : public ICursor
{
public:
    using ICursor::getLocation;
    using ICursor::getOpacity;
    using ICursor::getVisibility;
    using ICursor::setLocation;
    using ICursor::setOpacity;
    using ICursor::setVisibility;

    /// Calls nothing of DirectFB.
    /// @param dfb      must outlive the cursor, which does not own it
    /// @param layer    must outlive the cursor, which does not own it
    /// @param visible  whether init() shows the pointer
    DFBCursor(IDirectFB* dfb, IDirectFBDisplayLayer* layer, bool visible);
    DFBCursor(const DFBCursor&) = delete;
    DFBCursor& operator=(const DFBCursor&) = delete;
    /// Releases the picture. The layer keeps the shape that it has.
    ~DFBCursor() override;

    void setVisibility(const unsigned int& index, bool visibility) override;
    bool getVisibility(const unsigned int& index) override;
    /// @param opacity  0 to 255. Deliberate: a greater number is stored whole, and the layer gets its low 8 bits.
    void setOpacity(const unsigned int& index, unsigned int opacity) override;
    unsigned int getOpacity(const unsigned int& index) override;
    /// Moves the pointer to the place of the rectangle, whose size is ignored: a pointer has the size of its picture.
    void setLocation(const unsigned int& index, const Rect& location) override;
    /// @return the position of the pointer, with the size of its picture
    /// @throws Exception  code 2 also while there is no picture, before init()
    Rect getLocation(const unsigned int& index) override;

    /// A pointer lies above everything: these and the four below throw code 4 and do nothing else.
    void setZOrder(const unsigned int& index, unsigned int zOrder) override;
    unsigned int getZOrder(const unsigned int& index) override;
    void bringToFront(const unsigned int& index) override;
    void sendToBack(const unsigned int& index) override;
    void bringForward(const unsigned int& index) override;
    void sendBackward(const unsigned int& index) override;

    /// @return false: locations are those of the window
    bool isCursorGlobal() override;
    /// The state is only kept for the application; it does not change the picture.
    void setCursorState(const CursorState& state) override;
    CursorState getCursorState() override;

    /// Loads the picture and makes it the layer's pointer. Called once; blocks while the file is read.
    /// @throws Exception  code 7; a picture that was loaded by then is released with the cursor
    virtual void init();

private:
    IDirectFB* dfb;               ///< not owned
    IDirectFBDisplayLayer* layer; ///< not owned
    IDirectFBSurface* surface;    ///< owned; null until init() has created it
    CursorState cursorState;
    bool visible;
    unsigned int opacity;
};

} // namespace Corvane
