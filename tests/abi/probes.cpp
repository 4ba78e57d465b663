/// One class for each whose binary interface is fixed, derived from it and compiled, never run.
///
/// The first operation that a probe declares itself is `endOfTable()`, so it stands right behind the last slot of the
/// class it derives from: what precedes it is that class's table. A probe gives every pure operation a body, because a
/// pure one leaves no name in the table.
#include <corvane/APPRPCServer.h>
#include <corvane/DFBCursor.h>
#include <corvane/DFBInputSink.h>
#include <corvane/TekloWindow.h>
#include <corvane/Window.h>
#include <corvane/WindowExec.h>
#include <corvane/foundation/Event.h>
#include <corvane/foundation/Exception.h>
#include <corvane/foundation/MapObject.h>
#include <corvane/interfaces/ICursor.h>
#include <corvane/interfaces/ISurfaceManagement.h>
#include <corvane/procman/Client.h>

using namespace Corvane;

/// Gives the serial operations bodies.
template <class Base>
struct Serial : Base {
    std::unique_ptr<SerialObject> clone() const override { return nullptr; }
    void serialize(Serializer&) const override {}
};

/// Gives the surface operations bodies.
template <class Base>
struct Surface : Base {
    void setVisibility(const unsigned int&, bool) override {}
    bool getVisibility(const unsigned int&) override { return false; }
    void setOpacity(const unsigned int&, unsigned int) override {}
    unsigned int getOpacity(const unsigned int&) override { return 0; }
    void setZOrder(const unsigned int&, unsigned int) override {}
    unsigned int getZOrder(const unsigned int&) override { return 0; }
    void setLocation(const unsigned int&, const ISurfaceCompositing::Rect&) override {}
    ISurfaceCompositing::Rect getLocation(const unsigned int&) override { return {0, 0, 0, 0}; }
    void bringToFront(const unsigned int&) override {}
    void sendToBack(const unsigned int&) override {}
    void bringForward(const unsigned int&) override {}
    void sendBackward(const unsigned int&) override {}
};

struct ExceptionProbe : Exception {
    virtual void endOfTable();
};
void ExceptionProbe::endOfTable() {}

struct SerialObjectProbe : Serial<SerialObject> {
    virtual void endOfTable();
    std::string getObjectType() const override { return {}; }
};
void SerialObjectProbe::endOfTable() {}

struct MapBaseProbe : Serial<MapBase> {
    virtual void endOfTable();
};
void MapBaseProbe::endOfTable() {}

struct MapObjectProbe : MapObject<int> {
    virtual void endOfTable();
};
void MapObjectProbe::endOfTable() {}

struct EventProbe : Serial<Event> {
    virtual void endOfTable();
    std::string getTypeName() const override { return {}; }
};
void EventProbe::endOfTable() {}

struct ISurfaceCompositingProbe : Surface<ISurfaceCompositing> {
    virtual void endOfTable();
};
void ISurfaceCompositingProbe::endOfTable() {}

struct ICursorProbe : Surface<ICursor> {
    virtual void endOfTable();
    bool isCursorGlobal() override { return false; }
    void setCursorState(const CursorState&) override {}
    CursorState getCursorState() override { return CURSOR_STATE_NORMAL; }
};
void ICursorProbe::endOfTable() {}

struct DFBCursorProbe : DFBCursor {
    using DFBCursor::DFBCursor;
    virtual void endOfTable();
};
void DFBCursorProbe::endOfTable() {}

struct DFBInputSinkProbe : DFBInputSink {
    using DFBInputSink::DFBInputSink;
    virtual void endOfTable();
};
void DFBInputSinkProbe::endOfTable() {}

struct ActiveObjectProbe : ActiveObject {
    virtual void endOfTable();
    int thread() override { return 0; }
};
void ActiveObjectProbe::endOfTable() {}

struct KeepAliveThreadProbe : Application::KeepAliveThread {
    virtual void endOfTable();
};
void KeepAliveThreadProbe::endOfTable() {}

struct IApplicationProbe : IApplication {
    virtual void endOfTable();
    std::string getState() override { return {}; }
    void setState(const std::string&) override {}
    void activate() override {}
    void suspend() override {}
    void terminate() override {}
    RuntimeStatistics getRuntimeStatistics() override { return {}; }
};
void IApplicationProbe::endOfTable() {}

struct ApplicationProbe : Application {
    virtual void endOfTable();
};
void ApplicationProbe::endOfTable() {}

struct WindowProbe : Window {
    virtual void endOfTable();
    void bringToFront() override {}
    void sendToBack() override {}
    void bringForward() override {}
    void sendBackward() override {}
    std::string getTitle() const override { return {}; }
};
void WindowProbe::endOfTable() {}

struct TekloWindowProbe : TekloWindow {
    virtual void endOfTable();
    std::string getTitle() const override { return {}; }
};
void TekloWindowProbe::endOfTable() {}

struct IResourceAcquisitionProbe : IResourceAcquisition {
    virtual void endOfTable();
    ResourceToken getResource(const std::string&, const ISurfaceManagement::CreationSettings&) override { return {}; }
    void releaseResource(const ResourceToken&) override {}
};
void IResourceAcquisitionProbe::endOfTable() {}

struct ClientProbe : Client {
    virtual void endOfTable();
};
void ClientProbe::endOfTable() {}

struct APPServerProbe : APPServer {
    virtual void endOfTable();
    void onKeepAlive(const std::string&, const std::string&) override {}
    void onFocusChange(const std::string&, const bool&, const bool&) override {}
    void onVisibilityChange(const std::string&, const bool&, const bool&) override {}
    void onOpacityChange(const std::string&, const unsigned int&, const unsigned int&) override {}
    void onZOrderChange(const std::string&, const unsigned int&, const unsigned int&) override {}
    void onLocationChange(const std::string&, const ISurfaceCompositing::Rect&,
                          const ISurfaceCompositing::Rect&) override
    {
    }
};
void APPServerProbe::endOfTable() {}

struct RPCServerProbe : RPCServer {
    virtual void endOfTable();
};
void RPCServerProbe::endOfTable() {}

struct APPRPCServerProbe : APPRPCServer {
    virtual void endOfTable();
};
void APPRPCServerProbe::endOfTable() {}

struct WindowExecProbe : WindowExec {
    virtual void endOfTable();
};
void WindowExecProbe::endOfTable() {}

/// Only the members of these are fixed; a variable makes the compiler describe them.
ISurfaceManagement::CreationSettings* creationSettings;
ISurfaceCompositing::Rect* rectangle;
