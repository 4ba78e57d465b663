#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/MapObject.h>
#include <corvane/interfaces/IService.h>
#include <string>

namespace Corvane
{

/// A service that accepts authorization tokens from other applications.
///
/// An author derives from it beside Application and passes the uid on:
///
///     class VolumeService : public Application, public Service
///     {
///     public:
///         using Application::Application;
///         std::string getUid() override { return Application::getUid(); }
///         void createAuthorizationToken(unsigned int token, MapObject<MapObject<int>> attributes) override;
///         void deleteAuthorizationToken(unsigned int token) override;
///     };
///
/// `ApplicationExec` runs it; the control server does not own it, and lets go of it when it reaches a terminated state,
/// which it does before it is destroyed. The token operations are called on the control server's thread, one at a time,
/// while the main thread and other servers' threads may be at work on the same object. `TokenStore` keeps tokens for a
/// service that does not want to keep them in a way of its own. docs/services.md tells more.
class CORVANE_EXPORT Service : public virtual IService, public virtual IService::IServiceNotifier
{
public:
    /// @return the id of the application; its control server is called "APP" followed by it
    virtual std::string getUid() = 0;

    /// A caller announces a token of its choice with its attributes: a map from a name to a map from a name to a
    /// number. What this throws becomes the error reply of the caller; a service refuses a token in that way.
    virtual void createAuthorizationToken(unsigned int token, MapObject<MapObject<int>> attributes) = 0;
    /// A caller withdraws a token; what a token that was never created means is the service's decision.
    virtual void deleteAuthorizationToken(unsigned int token) = 0;
};

} // namespace Corvane
