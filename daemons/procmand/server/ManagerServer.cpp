#include "server/ManagerServer.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace Procmand
{

namespace
{

/// Every window of the box has a connection, and so has whoever watches.
constexpr unsigned int CONNECTION_LIMIT = 1024;

constexpr char SUBSCRIPTION[] = "rpc.subscribe";

/// What the audit has a record of, also where it is allowed, and the parameter that tells what it is about.
constexpr std::array<std::pair<std::string_view, const char*>, 4> AUDITED{{{"IApplicationManager::launch", "program"},
                                                                           {"IApplicationManager::stop", "uid"},
                                                                           {"IApplicationManager::restart", "uid"},
                                                                           {"IWindowCompositing::setFocus", "uid"}}};

std::string nameOf(const Corvane::IRPC::RPCSynchronousMethodObject& request)
{
    return request.getInterface() + "::" + request.getMethod();
}

/// @return the text of the member of a JSON object, empty where it has none
std::string findText(const std::string& object, const char* key)
try {
    Corvane::Deserializer deserializer(object);
    return deserializer.hasMember(key) ? Corvane::deserialize<std::string>(key, deserializer) : std::string();
} catch (const Corvane::SerialError&) {
    return {};
}

/// @return what a reply says of a failed call, empty for one that was carried out
std::string findProblem(const std::string& reply)
{
    Corvane::Deserializer deserializer(reply);
    if (!deserializer.hasMember("error"))
        return {};
    deserializer.enterMember("error");
    return Corvane::deserialize<std::string>("message", deserializer);
}

} // namespace

ManagerServer::ManagerServer(Box& box, Supervisor& supervisor, FocusControl& focus, WindowService& windows)
    : RPCServer("ORU"), box(box), supervisor(supervisor), focus(focus), windows(windows)
{
    setConnectionLimit(CONNECTION_LIMIT);
    setSubscriptionCheck([this] { return checkSubscription(); });
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
    const auto table = interfaces.find(request.getInterface());
    if (table == interfaces.end() || !table->second.contains(request.getMethod()))
        return RPCServer::handleRPCSynchronousMethod(request);
    client.emplace(box, Caller::getCurrent());
    std::string reply = handleCall(nameOf(request), request);
    client.reset();
    return reply;
}

std::string ManagerServer::handleCall(const std::string& method, const Request& request)
{
    const auto* const audited =
        std::find_if(AUDITED.begin(), AUDITED.end(), [&method](const auto& entry) { return entry.first == method; });
    const bool isAudited = audited != AUDITED.end();
    const std::string subject = isAudited ? findText(request.getParameters(), audited->second) : std::string();
    if (const std::string refusal = findRefusal(method); !refusal.empty()) {
        noteRefusal(method, subject, refusal);
        return Corvane::IRPC::RPCErrorObject(request, refusal).serialize();
    }
    std::string reply = RPCServer::handleRPCSynchronousMethod(request);
    if (isAudited)
        box.audit.note(client->getCaller(), {.method = method, .subject = subject, .problem = findProblem(reply)});
    return reply;
}

std::string ManagerServer::findRefusal(const std::string& method) const
{
    const Rights& rights = client->getRights();
    if (rights.extentOf(method) != Extent::NOTHING)
        return {};
    const std::string role = rights.role == Role::NONE ? "no role" : std::string("the role ") + nameOf(rights.role);
    return method + " needs the role " + rolesFor(method) + "; this caller has " + role;
}

std::string ManagerServer::checkSubscription()
{
    std::lock_guard guard(box.lock);
    client.emplace(box, Caller::getCurrent());
    std::string refusal = findRefusal(SUBSCRIPTION);
    if (!refusal.empty())
        noteRefusal(SUBSCRIPTION, "", refusal);
    client.reset();
    return refusal;
}

void ManagerServer::noteRefusal(const std::string& method, const std::string& subject, const std::string& problem)
{
    box.audit.note(client->getCaller(), {.method = method, .subject = subject, .problem = problem, .isRefused = true});
}

void ManagerServer::refuse(const Request& request, const std::string& subject, const std::string& problem)
{
    noteRefusal(nameOf(request), subject, problem);
    throw std::runtime_error(problem);
}

const WindowState& ManagerServer::requireWindow(const Request& request)
{
    Corvane::Deserializer parameters(request.getParameters());
    const WindowState& window = windows.require(Corvane::deserialize<unsigned int>("index", parameters));
    const std::string method = nameOf(request);
    const ManagedApplication* const owner = box.registry.find(window.uid);
    if (client->getRights().extentOf(method) == Extent::ALL || (owner != nullptr && client->has(*owner)))
        return window;
    const std::string problem = method + " needs the role " + Procmand::nameOf(Role::MANAGER) + " for window " +
                                std::to_string(window.index) + ", which is another application's";
    refuse(request, window.uid, problem);
}

void ManagerServer::takeUp(const Request& request, const std::string& uid, pid_t pid)
{
    const Caller& caller = client->getCaller();
    ManagedApplication* const known = box.registry.find(uid);
    if (known != nullptr && !client->has(*known))
        refuse(request, uid, "the uid " + uid + " belongs to another process");
    const bool isLaunched = known != nullptr && known->process && known->process->getPid() == pid;
    if (pid != caller.getPid() && !isLaunched)
        refuse(request, uid, "process " + std::to_string(pid) + " is not the caller's own");
    if (known != nullptr)
        return supervisor.greet(*known);
    if (client->countRegistrations() >= Quotas::REGISTRATIONS)
        throw std::runtime_error("process " + std::to_string(pid) + " has registered " +
                                 std::to_string(Quotas::REGISTRATIONS) + " applications already");
    std::optional<Process> process = caller.findProcess();
    if (uid.empty() || !process)
        throw std::runtime_error(uid.empty() ? "the uid is empty" : "there is no process " + std::to_string(pid));
    supervisor.adopt(uid, std::move(*process));
}

bool ManagerServer::hasItsWindows() const
{
    return client->countWindows() >= box.settings.clientWindowLimit ||
           (!client->getCaller().isTrusted() && client->countWindowsOfUser() >= (box.settings.windowLimit + 1) / 2);
}

} // namespace Procmand
