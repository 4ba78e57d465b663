#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/RPCObjects.h>
#include <corvane/interfaces/IListener.h>
#include <corvane/interfaces/IObservable.h>

/// Listening to what a server announces, from inside its process.
namespace Corvane::IRPC
{

/// Hears every notification of a server, on the thread that raised it.
class CORVANE_EXPORT IRPCListener : public virtual IListener
{
public:
    virtual void handleRPCNotification(const RPCNotificationObject& notification) = 0;
};

class CORVANE_EXPORT IRPCNotifier : public virtual IObservable, public virtual IRPCListener
{
};

} // namespace Corvane::IRPC
