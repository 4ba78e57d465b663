#include <corvane/APPRPCServer.h>

#include "Descriptions.h"
#include <corvane/Window.h>
#include <corvane/common/Service.h>

namespace Corvane
{

APPRPCServer::APPRPCServer(Window* window) : APPServer(window), RPCServer("APP")
{
    name += window->getUid();
    description = WINDOW_SERVER_DESCRIPTION;
    fillApplicationMethods();
    fillWindowMethods();
    interfaces["IApplication"] = applicationMethods;
    interfaces["IWindow"] = windowMethods;
}

APPRPCServer::APPRPCServer(Service* service) : APPServer(service), RPCServer("APP")
{
    name += service->getUid();
    description = SERVICE_SERVER_DESCRIPTION;
    fillApplicationMethods();
    interfaces["IApplication"] = applicationMethods;
    fillServiceMethods();
    interfaces["IService"] = serviceMethods;
}

APPRPCServer::~APPRPCServer()
{
    // Before anything is destroyed: no call may find half a server, and the one that runs must be able to finish.
    // Not through the virtual table, for a derived class is gone already.
    RPCServer::shutdown();
}

void APPRPCServer::init()
{
    APPServer::init();
    RPCServer::init();
}

void APPRPCServer::fillApplicationMethods()
{
    applicationMethods["getState"] = static_cast<Handler>(&APPRPCServer::getState);
    applicationMethods["setState"] = static_cast<Handler>(&APPRPCServer::setState);
    applicationMethods["activate"] = static_cast<Handler>(&APPRPCServer::activate);
    applicationMethods["suspend"] = static_cast<Handler>(&APPRPCServer::suspend);
    applicationMethods["terminate"] = static_cast<Handler>(&APPRPCServer::terminate);
    applicationMethods["getRuntimeStatistics"] = static_cast<Handler>(&APPRPCServer::getRuntimeStatistics);
}

void APPRPCServer::fillWindowMethods()
{
    windowMethods["handleFocus"] = static_cast<Handler>(&APPRPCServer::handleFocus);
    windowMethods["isFocused"] = static_cast<Handler>(&APPRPCServer::isFocused);
    windowMethods["handleEvent"] = static_cast<Handler>(&APPRPCServer::handleEvent);
    windowMethods["setVisibility"] = static_cast<Handler>(&APPRPCServer::setVisibility);
    windowMethods["getVisibility"] = static_cast<Handler>(&APPRPCServer::getVisibility);
    windowMethods["setOpacity"] = static_cast<Handler>(&APPRPCServer::setOpacity);
    windowMethods["getOpacity"] = static_cast<Handler>(&APPRPCServer::getOpacity);
    windowMethods["setZOrder"] = static_cast<Handler>(&APPRPCServer::setZOrder);
    windowMethods["getZOrder"] = static_cast<Handler>(&APPRPCServer::getZOrder);
    windowMethods["setLocation"] = static_cast<Handler>(&APPRPCServer::setLocation);
    windowMethods["getLocation"] = static_cast<Handler>(&APPRPCServer::getLocation);
    windowMethods["bringToFront"] = static_cast<Handler>(&APPRPCServer::bringToFront);
    windowMethods["sendToBack"] = static_cast<Handler>(&APPRPCServer::sendToBack);
    windowMethods["bringForward"] = static_cast<Handler>(&APPRPCServer::bringForward);
    windowMethods["sendBackward"] = static_cast<Handler>(&APPRPCServer::sendBackward);
}

void APPRPCServer::fillServiceMethods()
{
    serviceMethods["authorizationTokenCreation"] = static_cast<Handler>(&APPRPCServer::authorizationTokenCreation);
    serviceMethods["authorizationTokenDeletion"] = static_cast<Handler>(&APPRPCServer::authorizationTokenDeletion);
}

} // namespace Corvane
