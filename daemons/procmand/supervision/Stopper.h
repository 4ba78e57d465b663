#pragma once

#include "supervision/Links.h"

namespace Procmand
{

/// Brings applications to their end: asks them, then sends SIGTERM, then SIGKILL, each with a deadline.
///
/// That an application has ended is noticed elsewhere. Guarded by the lock of the box.
class Stopper
{
public:
    Stopper(Box& box, Links& links);

    /// Begins to stop a living application, or gives the stop that is under way another purpose. One that has a control
    /// server is asked to terminate, or, for RUNAWAY, to take that state.
    void begin(ManagedApplication& application, StopPurpose purpose);
    /// Goes on to SIGKILL at once. @param purpose  of a stop that was not under way yet
    void kill(ManagedApplication& application, StopPurpose purpose);
    /// The application has ended. @return what brought it down: "terminate", "SIGTERM" or "SIGKILL"
    std::string finish(ManagedApplication& application);

private:
    void enter(ManagedApplication& application, unsigned int stage);
    void ask(ManagedApplication& application);
    /// The application has not taken the request, or not understood it.
    void onRefusal(const std::string& uid, const std::string& problem);
    void signal(ManagedApplication& application, int signal, Settings::Duration deadline);
    void giveUp(ManagedApplication& application);
    void enterLater(ManagedApplication& application, Settings::Duration delay, unsigned int stage);

    Box& box;
    Links& links;
};

} // namespace Procmand
