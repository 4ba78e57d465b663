#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/interfaces/ILifecycleManagement.h>
#include <corvane/interfaces/IObservable.h>
#include <string>

namespace Corvane
{

/// An application as its managers see it.
///
/// The forms that take the uid of the caller are the ones for remote use; they ignore it and call the plain form.
class CORVANE_EXPORT IApplication : public virtual ILifecycleManagement
{
public:
    virtual std::string getState(const std::string& /*uid*/) { return getState(); }
    virtual void setState(const std::string& /*uid*/, const std::string& state) { setState(state); }
    virtual void activate(const std::string& /*uid*/) { activate(); }
    virtual void suspend(const std::string& /*uid*/) { suspend(); }
    virtual void terminate(const std::string& /*uid*/) { terminate(); }
    virtual RuntimeStatistics getRuntimeStatistics(const std::string& /*uid*/) { return getRuntimeStatistics(); }

    virtual std::string getState() = 0;
    /// Asks for a change of state. A change that the rules do not allow is refused silently.
    virtual void setState(const std::string& state) = 0;
    virtual void activate() = 0;
    virtual void suspend() = 0;
    virtual void terminate() = 0;
    virtual RuntimeStatistics getRuntimeStatistics() = 0;

    class CORVANE_EXPORT IApplicationListener : public virtual ILifecycleManagementListener
    {
    };

    class CORVANE_EXPORT IApplicationNotifier : public virtual IObservable, public virtual IApplicationListener
    {
    };
};

} // namespace Corvane
