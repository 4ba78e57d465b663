#include "server/ManagerServer.h"

/// What clients are told about the methods and notifications of the process manager: one entry for each method of its
/// tables and for each notification of Notices.cpp.
namespace Procmand
{

namespace
{

using Corvane::RPCMethodDescription;
using Corvane::RPCNotificationDescription;
using Corvane::RPCParameterDescription;

constexpr std::string_view NOTHING = R"({"type":"null"})";
constexpr std::string_view STRING = R"({"type":"string"})";
constexpr std::string_view BOOLEAN = R"({"type":"boolean"})";
constexpr std::string_view INTEGER = R"({"type":"integer"})";
constexpr std::string_view UNSIGNED = R"({"type":"integer","minimum":0,"maximum":4294967295})";
constexpr std::string_view STRINGS = R"({"type":"array","items":{"type":"string"}})";
constexpr std::string_view OBJECT = R"({"type":"object"})";
constexpr std::string_view OBJECTS = R"({"type":"array","items":{"type":"object"}})";
constexpr std::string_view MODE = R"({"type":"string","enum":["never","on-failure","always"]})";
constexpr std::string_view RECT = R"({"type":"object","required":["x","y","width","height"],"properties":{)"
                                  R"("x":{"type":"integer"},"y":{"type":"integer"},)"
                                  R"("width":{"type":"integer","minimum":0},"height":{"type":"integer","minimum":0}}})";
constexpr std::string_view SETTINGS =
    R"({"type":"object","properties":{"sessionIndex":{"type":"integer"},"location":{"type":"object"},)"
    R"("zOrder":{"type":"integer"},"opacity":{"type":"integer"},"visibility":{"type":"boolean"}}})";
constexpr std::string_view TOKEN = R"({"type":"object","properties":{)"
                                   R"("state":{"type":"integer","description":"3: granted"},)"
                                   R"("resourceIndex":{"type":"integer"}}})";

constexpr RPCParameterDescription LAUNCH[] = {{"program", STRING},
                                              {"arguments", STRINGS},
                                              {"environment", OBJECT},
                                              {"workingDirectory", STRING},
                                              {"applicationType", STRING},
                                              {"applicationParameters", STRING},
                                              {"restart", MODE},
                                              {"fresh", BOOLEAN},
                                              {"compositingParameters", SETTINGS},
                                              {"name", STRING},
                                              {"uid", STRING},
                                              {"user", STRING}};
constexpr RPCParameterDescription UID[] = {{"uid", STRING}};
constexpr RPCParameterDescription UID_AND_PID[] = {{"uid", STRING}, {"pid", INTEGER}};
constexpr RPCParameterDescription LIMIT[] = {{"limit", UNSIGNED}};
constexpr RPCParameterDescription RESOURCE[] = {
    {"uid", STRING}, {"pid", UNSIGNED}, {"clientType", UNSIGNED}, {"resourceType", UNSIGNED}, {"settings", SETTINGS}};
constexpr RPCParameterDescription INDEX[] = {{"index", UNSIGNED}};
constexpr RPCParameterDescription VISIBILITY[] = {{"index", UNSIGNED}, {"visibility", BOOLEAN}};
constexpr RPCParameterDescription OPACITY[] = {{"index", UNSIGNED}, {"opacity", UNSIGNED}};
constexpr RPCParameterDescription Z_ORDER[] = {{"index", UNSIGNED}, {"zorder", UNSIGNED}};
constexpr RPCParameterDescription LOCATION[] = {{"index", UNSIGNED}, {"location", RECT}};
constexpr RPCParameterDescription FOCUS[] = {{"uid", STRING}, {"obtained", BOOLEAN}};

constexpr RPCMethodDescription METHODS[] = {
    {"IApplicationManager", "launch", "Accepts a program to start; tells its uid. onLaunch or onLaunchFailure follows.",
     LAUNCH, STRING},
    {"IApplicationManager", "stop", "Begins to stop an application. onStop or onStopFailure follows.", UID, NOTHING},
    {"IApplicationManager", "restart", "Begins to stop an application and to start it again. onLaunch follows.", UID,
     NOTHING},
    {"IApplicationManager", "registerApplication", "Announces an application that was started by hand.", UID_AND_PID,
     NOTHING},
    {"IApplicationManager", "getApplications", "Tells all applications.", {}, OBJECTS},
    {"IApplicationManager", "getHistory", "Tells how applications ended, the latest last.", LIMIT, OBJECTS},
    {"IApplicationManager", "getAudit", "Tells who did what and who was refused what, the latest last.", LIMIT,
     OBJECTS},

    {"IResourceAcquisition", "getResource", "Asks for a window.", RESOURCE, TOKEN},
    {"IResourceAcquisition", "releaseResource", "Gives a window back.", INDEX, NOTHING},

    {"IWindowCompositing", "setVisibility", "Shows or hides a window.", VISIBILITY, NOTHING},
    {"IWindowCompositing", "getVisibility", "Tells whether a window is shown.", INDEX, BOOLEAN},
    {"IWindowCompositing", "setOpacity", "Sets the opacity: 0 transparent to 255 opaque.", OPACITY, NOTHING},
    {"IWindowCompositing", "getOpacity", "Tells the opacity.", INDEX, UNSIGNED},
    {"IWindowCompositing", "setZOrder", "Sets the place in the stack; a greater one is nearer to the viewer.", Z_ORDER,
     NOTHING},
    {"IWindowCompositing", "getZOrder", "Tells the place in the stack.", INDEX, UNSIGNED},
    {"IWindowCompositing", "setLocation", "Sets place and size on the screen, in pixels.", LOCATION, NOTHING},
    {"IWindowCompositing", "getLocation", "Tells place and size on the screen, in pixels.", INDEX, RECT},
    {"IWindowCompositing", "bringToFront", "Puts a window in front of all others.", INDEX, NOTHING},
    {"IWindowCompositing", "sendToBack", "Puts a window behind all others.", INDEX, NOTHING},
    {"IWindowCompositing", "bringForward", "Changes places with the next window in front.", INDEX, NOTHING},
    {"IWindowCompositing", "sendBackward", "Changes places with the next window behind.", INDEX, NOTHING},
    {"IWindowCompositing", "getWindows", "Tells all windows, from the back to the front.", {}, OBJECTS},
    {"IWindowCompositing", "setFocus",
     "Begins to give the input focus to a window, or to take it away. onFocusMove or onFocusFailure follows.", FOCUS,
     NOTHING},
    {"IWindowCompositing",
     "screenshot",
     "Begins to save what the screen shows; tells the PNG file. onScreenshot or onScreenshotFailure follows.",
     {},
     STRING},
};

constexpr RPCParameterDescription SAVED[] = {{"file", STRING}};
constexpr RPCParameterDescription SAVE_FAILED[] = {{"file", STRING}, {"reason", STRING}};
constexpr RPCParameterDescription LAUNCHED[] = {
    {"uid", STRING}, {"pid", INTEGER}, {"program", STRING}, {"restarts", UNSIGNED}};
constexpr RPCParameterDescription LAUNCH_FAILED[] = {{"uid", STRING}, {"program", STRING}, {"reason", STRING}};
constexpr RPCParameterDescription REGISTERED[] = {{"uid", STRING}, {"pid", INTEGER}, {"program", STRING}};
constexpr RPCParameterDescription ENDED[] = {{"uid", STRING},
                                             {"pid", INTEGER},
                                             {"program", STRING},
                                             {"time", STRING},
                                             {"name", STRING},
                                             {"exitCode", INTEGER},
                                             {"signal", INTEGER},
                                             {"state", STRING},
                                             {"previousState", STRING},
                                             {"ranAway", BOOLEAN},
                                             {"wasStopped", BOOLEAN},
                                             {"restarts", UNSIGNED},
                                             {"standardOutput", STRING},
                                             {"standardError", STRING}};
constexpr RPCParameterDescription STOPPED[] = {{"uid", STRING}, {"means", STRING}};
constexpr RPCParameterDescription FAILED[] = {{"uid", STRING}, {"reason", STRING}};
constexpr RPCParameterDescription DELAYED[] = {{"uid", STRING}, {"delayMs", UNSIGNED}, {"restartsInRow", UNSIGNED}};
constexpr RPCParameterDescription LIMITED[] = {{"uid", STRING}, {"restartsInRow", UNSIGNED}};
constexpr RPCParameterDescription FOCUS_MOVED[] = {{"oldUid", STRING}, {"uid", STRING}};
constexpr RPCParameterDescription GRANTED[] = {{"index", UNSIGNED},   {"uid", STRING},      {"visibility", BOOLEAN},
                                               {"opacity", UNSIGNED}, {"zOrder", UNSIGNED}, {"location", RECT}};
constexpr RPCParameterDescription RELEASED[] = {{"index", UNSIGNED}, {"uid", STRING}};
constexpr RPCParameterDescription VISIBILITY_CHANGED[] = {
    {"uid", STRING}, {"index", UNSIGNED}, {"oldVisibility", BOOLEAN}, {"newVisibility", BOOLEAN}};
constexpr RPCParameterDescription OPACITY_CHANGED[] = {
    {"uid", STRING}, {"index", UNSIGNED}, {"oldOpacity", UNSIGNED}, {"newOpacity", UNSIGNED}};
constexpr RPCParameterDescription Z_ORDER_CHANGED[] = {
    {"uid", STRING}, {"index", UNSIGNED}, {"oldZOrder", UNSIGNED}, {"newZOrder", UNSIGNED}};
constexpr RPCParameterDescription LOCATION_CHANGED[] = {
    {"uid", STRING}, {"index", UNSIGNED}, {"oldLocation", RECT}, {"newLocation", RECT}};

constexpr RPCNotificationDescription NOTIFICATIONS[] = {
    {"IApplicationManager::onLaunch", "A program was started.", LAUNCHED},
    {"IApplicationManager::onLaunchFailure", "A program could not be started.", LAUNCH_FAILED},
    {"IApplicationManager::onRegister", "An application that was started elsewhere was taken up.", REGISTERED},
    {"IApplicationManager::onRunaway", "An application has not proved that it is alive.", UID_AND_PID},
    {"IApplicationManager::onEnd", "An application has ended.", ENDED},
    {"IApplicationManager::onStop", "An application that was to be stopped has ended.", STOPPED},
    {"IApplicationManager::onStopFailure", "An application did not end.", FAILED},
    {"IApplicationManager::onRestartDelay", "An application will be started again.", DELAYED},
    {"IApplicationManager::onRestartLimit", "An application has failed too often to be started again.", LIMITED},
    {"IWindowCompositing::onFocusMove", "The focus has moved; an empty uid is nobody.", FOCUS_MOVED},
    {"IWindowCompositing::onFocusFailure", "A window could not be given the focus.", FAILED},
    {"IWindowCompositing::onWindowGrant", "An application got a window.", GRANTED},
    {"IWindowCompositing::onWindowRelease", "A window is gone.", RELEASED},
    {"IWindowCompositing::onVisibilityChange", "A window's visibility has changed.", VISIBILITY_CHANGED},
    {"IWindowCompositing::onOpacityChange", "A window's opacity has changed.", OPACITY_CHANGED},
    {"IWindowCompositing::onZOrderChange", "A window's place in the stack has changed.", Z_ORDER_CHANGED},
    {"IWindowCompositing::onLocationChange", "A window's place or size has changed.", LOCATION_CHANGED},
    {"IWindowCompositing::onScreenshot", "A screenshot is complete.", SAVED},
    {"IWindowCompositing::onScreenshotFailure", "A screenshot could not be taken.", SAVE_FAILED},
};

} // namespace

constinit const Corvane::RPCServerDescription MANAGER_DESCRIPTION = {METHODS, NOTIFICATIONS};

} // namespace Procmand
