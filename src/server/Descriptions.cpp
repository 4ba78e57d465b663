#include "Descriptions.h"

/// What clients are told about the methods and notifications of a control server: one entry for each method of the
/// tables in APPRPCServer.cpp and for each notification of Notifications.cpp.
namespace Corvane
{

namespace
{

constexpr std::string_view NOTHING = R"({"type":"null"})";
constexpr std::string_view STRING = R"({"type":"string"})";
constexpr std::string_view STATE =
    R"({"type":"string","examples":["UNINITIALIZED","LOADING","RUNNING","SUSPENDING","SUSPENDED","RESUMING",)"
    R"("TERMINATING","TERMINATED","ABORTED","RUNAWAY"]})";
constexpr std::string_view BOOLEAN = R"({"type":"boolean"})";
constexpr std::string_view UNSIGNED = R"({"type":"integer","minimum":0,"maximum":4294967295})";

constexpr std::string_view RECT = R"({"type":"object","required":["x","y","width","height"],"properties":{)"
                                  R"("x":{"type":"integer","minimum":-2147483648,"maximum":2147483647},)"
                                  R"("y":{"type":"integer","minimum":-2147483648,"maximum":2147483647},)"
                                  R"("width":{"type":"integer","minimum":0,"maximum":4294967295},)"
                                  R"("height":{"type":"integer","minimum":0,"maximum":4294967295}}})";

constexpr std::string_view STATISTICS =
    R"({"type":"object","required":["processName","hostName","cpuLoad","maxResidentSet"],"properties":{)"
    R"("processName":{"type":"string"},"hostName":{"type":"string"},)"
    R"("reserved0":{"type":"integer"},"reserved1":{"type":"integer"},)"
    R"("cpuLoad":{"type":"integer","description":"percent of one processor since the previous call"},)"
    R"("maxResidentSet":{"type":"integer","description":"kilobytes"},)"
    R"("reserved2":{"type":"integer"},"reserved3":{"type":"integer"}}})";

constexpr std::string_view EVENT =
    R"({"oneOf":[{"type":"object","required":["type","keyCode","pressed"],"properties":{)"
    R"("type":{"const":"KeyEvent"},"keyCode":{"type":"integer","minimum":0},"pressed":{"type":"boolean"}}},)"
    R"({"type":"object","required":["type","asciiCode","pressed"],"properties":{)"
    R"("type":{"const":"AsciiEvent"},"asciiCode":{"type":"integer","minimum":0,"maximum":255},)"
    R"("pressed":{"type":"boolean"}}},)"
    R"({"type":"object","required":["type"],"properties":{"type":{"const":"MouseEvent"},)"
    R"("buttons":{"type":"object","properties":{"isLeftPressed":{"type":"boolean"},)"
    R"("isMiddlePressed":{"type":"boolean"},"isRightPressed":{"type":"boolean"},"hasLeftChanged":{"type":"boolean"},)"
    R"("hasMiddleChanged":{"type":"boolean"},"hasRightChanged":{"type":"boolean"}}},)"
    R"("movement":{"type":"object","properties":{"deltaX":{"type":"integer"},"deltaY":{"type":"integer"},)"
    R"("deltaZ":{"type":"integer"}}},)"
    R"("position":{"type":"object","properties":{"x":{"type":"integer"},"y":{"type":"integer"}}}}}]})";

constexpr std::string_view ATTRIBUTES =
    R"({"type":"string","description":"the JSON text of an object of objects of integers"})";

constexpr RPCParameterDescription REQUESTED_STATE[] = {{"requestedState", STATE}};
constexpr RPCParameterDescription OBTAINED[] = {{"obtained", BOOLEAN}};
constexpr RPCParameterDescription INPUT[] = {{"event", EVENT}};
constexpr RPCParameterDescription VISIBILITY[] = {{"visibility", BOOLEAN}};
constexpr RPCParameterDescription OPACITY[] = {{"opacity", UNSIGNED}};
constexpr RPCParameterDescription Z_ORDER[] = {{"zorder", UNSIGNED}};
constexpr RPCParameterDescription LOCATION[] = {{"location", RECT}};
constexpr RPCParameterDescription TOKEN_WITH_ATTRIBUTES[] = {{"authAttrInternal", ATTRIBUTES}, {"token", UNSIGNED}};
constexpr RPCParameterDescription TOKEN[] = {{"token", UNSIGNED}};

/// A window's methods are the first two groups, a service's the last two.
constexpr RPCMethodDescription METHODS[] = {
    {"IWindow", "handleFocus", "Gives the input focus to the window, or takes it away.", OBTAINED, NOTHING},
    {"IWindow", "isFocused", "Tells whether the window has the input focus.", {}, BOOLEAN},
    {"IWindow", "handleEvent", "Hands the window an input event; tells whether it used it.", INPUT, BOOLEAN},
    {"IWindow", "setVisibility", "Shows or hides the window.", VISIBILITY, NOTHING},
    {"IWindow", "getVisibility", "Tells whether the window is shown.", {}, BOOLEAN},
    {"IWindow", "setOpacity", "Sets the opacity: 0 transparent to 255 opaque.", OPACITY, NOTHING},
    {"IWindow", "getOpacity", "Tells the opacity.", {}, UNSIGNED},
    {"IWindow", "setZOrder", "Sets the place in the stack; a greater one is nearer to the viewer.", Z_ORDER, NOTHING},
    {"IWindow", "getZOrder", "Tells the place in the stack.", {}, UNSIGNED},
    {"IWindow", "setLocation", "Sets place and size on the screen, in pixels.", LOCATION, NOTHING},
    {"IWindow", "getLocation", "Tells place and size on the screen, in pixels.", {}, RECT},
    {"IWindow", "bringToFront", "Does nothing; setZOrder changes the stack.", {}, NOTHING},
    {"IWindow", "sendToBack", "Does nothing; setZOrder changes the stack.", {}, NOTHING},
    {"IWindow", "bringForward", "Does nothing; setZOrder changes the stack.", {}, NOTHING},
    {"IWindow", "sendBackward", "Does nothing; setZOrder changes the stack.", {}, NOTHING},

    {"IApplication", "getState", "Tells the lifecycle state.", {}, STATE},
    {"IApplication", "setState", "Asks for a lifecycle state; a refusal is silent.", REQUESTED_STATE, NOTHING},
    {"IApplication", "activate", "Asks a suspended application to resume.", {}, NOTHING},
    {"IApplication", "suspend", "Asks a loading or running application to suspend.", {}, NOTHING},
    {"IApplication", "terminate", "Asks the application to end.", {}, NOTHING},
    {"IApplication", "getRuntimeStatistics", "Tells what the process uses.", {}, STATISTICS},

    {"IService", "authorizationTokenCreation", "Announces a token with its attributes.", TOKEN_WITH_ATTRIBUTES,
     NOTHING},
    {"IService", "authorizationTokenDeletion", "Withdraws a token.", TOKEN, NOTHING},
};
constexpr std::size_t WINDOW_METHODS = 15;
constexpr std::size_t SERVICE_METHODS = 2;

constexpr RPCParameterDescription KEEP_ALIVE[] = {{"uid", STRING}, {"state", STATE}};
constexpr RPCParameterDescription STATE_CHANGE[] = {{"uid", STRING}, {"oldState", STATE}, {"newState", STATE}};
constexpr RPCParameterDescription FOCUS_CHANGE[] = {
    {"uid", STRING}, {"oldIsFocused", BOOLEAN}, {"newIsFocused", BOOLEAN}};
constexpr RPCParameterDescription VISIBILITY_CHANGE[] = {
    {"uid", STRING}, {"oldVisibility", BOOLEAN}, {"newVisibility", BOOLEAN}};
constexpr RPCParameterDescription OPACITY_CHANGE[] = {
    {"uid", STRING}, {"oldOpacity", UNSIGNED}, {"newOpacity", UNSIGNED}};
constexpr RPCParameterDescription Z_ORDER_CHANGE[] = {
    {"uid", STRING}, {"oldZOrder", UNSIGNED}, {"newZOrder", UNSIGNED}};
constexpr RPCParameterDescription LOCATION_CHANGE[] = {{"uid", STRING}, {"oldLocation", RECT}, {"newLocation", RECT}};

/// A window's notifications are all of these, a service's the last two.
constexpr RPCNotificationDescription NOTIFICATIONS[] = {
    {"IWindow::onFocusChange", "The input focus was given or taken.", FOCUS_CHANGE},
    {"IWindow::onVisibilityChange", "The visibility was set.", VISIBILITY_CHANGE},
    {"IWindow::onOpacityChange", "The opacity was set.", OPACITY_CHANGE},
    {"IWindow::onZOrderChange", "The place in the stack was set.", Z_ORDER_CHANGE},
    {"IWindow::onLocationChange", "Place and size were set.", LOCATION_CHANGE},
    {"IApplication::onKeepAlive", "The process is alive; sent every 5 seconds.", KEEP_ALIVE},
    {"IApplication::onStateChange", "The lifecycle state has changed.", STATE_CHANGE},
};
constexpr std::size_t WINDOW_NOTIFICATIONS = 5;

} // namespace

constinit const RPCServerDescription WINDOW_SERVER_DESCRIPTION = {
    std::span(METHODS).first(std::size(METHODS) - SERVICE_METHODS), NOTIFICATIONS};
constinit const RPCServerDescription SERVICE_SERVER_DESCRIPTION = {
    std::span(METHODS).subspan(WINDOW_METHODS), std::span(NOTIFICATIONS).subspan(WINDOW_NOTIFICATIONS)};

} // namespace Corvane
