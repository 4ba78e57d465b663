#include "server/ManagerServer.h"

namespace Procmand
{

namespace
{

/// Every window of the box has a connection, and so has whoever watches.
constexpr unsigned int CONNECTION_LIMIT = 1024;

} // namespace

ManagerServer::ManagerServer(Box& box, Supervisor& supervisor, FocusControl& focus, WindowService& windows)
    : RPCServer("ORU"), box(box), supervisor(supervisor), focus(focus), windows(windows)
{
    setConnectionLimit(CONNECTION_LIMIT);
    description = MANAGER_DESCRIPTION;
    fillApplicationMethods();
    fillResourceMethods();
    fillCompositingMethods();
}

ManagerServer::~ManagerServer()
{
    // Before anything is destroyed: a call may be at work.
    RPCServer::shutdown();
}

std::string ManagerServer::handleRPCSynchronousMethod(const Request& request)
{
    std::lock_guard guard(box.lock);
    return RPCServer::handleRPCSynchronousMethod(request);
}

} // namespace Procmand
