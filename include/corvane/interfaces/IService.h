#pragma once

#include <corvane/interfaces/IApplication.h>

namespace Corvane
{

/// A service as its managers see it: an application that other applications use.
class CORVANE_EXPORT IService : public virtual IApplication
{
public:
    class CORVANE_EXPORT IServiceListener : public virtual IApplicationListener
    {
    };

    class CORVANE_EXPORT IServiceNotifier : public virtual IObservable
    {
    };
};

} // namespace Corvane
