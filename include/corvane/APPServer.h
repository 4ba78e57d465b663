#pragma once

#include <corvane/foundation/ComplexObject.h>
#include <corvane/foundation/Export.h>
#include <corvane/interfaces/IService.h>
#include <corvane/interfaces/IWindow.h>

namespace Corvane
{

class Service;
class Window;

/// Ties a control server to the one object that it serves, and lets go of it once that has terminated.
///
/// The served object is not owned. It must reach a terminated state before its destruction, or outlive the server. A
/// server that has let go does not take itself off the object's listeners: after STATE_ABORTED or STATE_RUNAWAY, which
/// further changes may follow, the object is to be destroyed first.
class CORVANE_EXPORT APPServer : public ComplexObject,
                                 public IWindow::IWindowListener,
                                 public IService::IServiceListener
{
public:
    explicit APPServer(Window* window);
    explicit APPServer(Service* service);
    APPServer(const APPServer&) = delete;
    APPServer& operator=(const APPServer&) = delete;

    /// Registers the server as a listener of the served object.
    void init() override;
    /// Takes the server off the served object's listeners.
    ~APPServer() override;

    /// @return the served object, null after it has terminated
    virtual IApplication* getSingleton();
    /// Forgets the served object when its new state is a terminated one.
    void onStateChange(const std::string& uid, const std::string& oldState, const std::string& newState) override;

protected:
    /// The pointers become null on whatever thread changes the state: read each once and keep the copy. Thread-safe.
    Window* getWindow();
    Service* getService();

private:
    Window* window;
    Service* service;
};

} // namespace Corvane
