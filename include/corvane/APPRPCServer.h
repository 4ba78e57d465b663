#pragma once

#include <corvane/APPServer.h>
#include <corvane/common/RPCServer.h>

namespace Corvane
{

/// The control server of an application process: managers query and drive the application through it.
///
/// It is named "APP" followed by the application's uid. For a window it offers the interfaces IApplication and IWindow,
/// for a service IApplication and IService; every change of the served object goes out as a notification. A failure of
/// any kind becomes an error reply; no exception leaves a handler. Handlers run one at a time on the server's thread.
///
/// The destructor waits for a handler that runs. For the order of destruction see APPServer; and destroy the server
/// only when no other thread, such as the served object's keep-alive thread, can be telling it something.
class CORVANE_EXPORT APPRPCServer : public APPServer, public RPCServer
{
public:
    using IWindow::IWindowListener::onLocationChange;
    using IWindow::IWindowListener::onOpacityChange;
    using IWindow::IWindowListener::onVisibilityChange;
    using IWindow::IWindowListener::onZOrderChange;

    explicit APPRPCServer(Window* window);
    explicit APPRPCServer(Service* service);

    /// Registers the server with the served object, then brings it up under its name.
    /// @throws RPCError  see RPCServer::init
    void init() override;
    ~APPRPCServer() override;

    void onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState) override;
    void onKeepAlive(const std::string& uid, const std::string& state) override;
    void onFocusChange(const std::string& uid, const bool& oldIsFocused, const bool& newIsFocused) override;
    void onVisibilityChange(const std::string& uid, const bool& oldVisibility, const bool& newVisibility) override;
    void onOpacityChange(const std::string& uid, const unsigned int& oldOpacity,
                         const unsigned int& newOpacity) override;
    void onZOrderChange(const std::string& uid, const unsigned int& oldZOrder, const unsigned int& newZOrder) override;
    void onLocationChange(const std::string& uid, const ISurfaceCompositing::Rect& oldLocation,
                          const ISurfaceCompositing::Rect& newLocation) override;

    /// The handlers: each answers one method of the name it bears, with the text of a reply object.
    virtual std::string getState(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string setState(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string activate(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string suspend(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string terminate(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string getRuntimeStatistics(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string handleFocus(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string isFocused(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string handleEvent(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string setVisibility(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string getVisibility(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string setOpacity(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string getOpacity(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string setZOrder(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string getZOrder(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string setLocation(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string getLocation(const IRPC::RPCSynchronousMethodObject& request);
    /// Deliberate: the four stacking methods do nothing and always succeed; stacking is done through setZOrder.
    virtual std::string bringToFront(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string sendToBack(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string bringForward(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string sendBackward(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string authorizationTokenCreation(const IRPC::RPCSynchronousMethodObject& request);
    virtual std::string authorizationTokenDeletion(const IRPC::RPCSynchronousMethodObject& request);

    using RPCServer::endCalls;
    using RPCServer::waitForHandler;

protected:
    /// The constructor registers copies of these in `interfaces`: what is added here later is never called.
    MethodTable applicationMethods;
    MethodTable windowMethods;
    MethodTable serviceMethods;

private:
    void fillApplicationMethods();
    void fillWindowMethods();
    void fillServiceMethods();
};

} // namespace Corvane
