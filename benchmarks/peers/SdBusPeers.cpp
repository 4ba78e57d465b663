#include "Peers.h"

#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>

namespace Corvane::Benchmark
{

namespace
{

constexpr const char* OBJECT = "/window";
constexpr const char* INTERFACE = "corvane.Window";
constexpr const char* METHOD = "SetOpacity";
constexpr const char* SERVICE = "corvane.Window";
constexpr unsigned int OPACITY = 128;
constexpr int ATTEMPTS = 10'000; // one a millisecond

int require(int result)
{
    if (result < 0)
        throw std::runtime_error("sd-bus refuses");
    return result;
}

int onSetOpacity(sd_bus_message* message, void*, sd_bus_error*)
{
    unsigned int opacity = 0;
    require(sd_bus_message_read(message, "u", &opacity));
    return sd_bus_reply_method_return(message, "");
}

void serve(sd_bus* bus)
{
    static const sd_bus_vtable METHODS[] = {SD_BUS_VTABLE_START(0),
                                            SD_BUS_METHOD(METHOD, "u", "", onSetOpacity, SD_BUS_VTABLE_UNPRIVILEGED),
                                            SD_BUS_VTABLE_END};
    require(sd_bus_add_object_vtable(bus, nullptr, OBJECT, INTERFACE, METHODS, nullptr));
    for (;;)
        if (require(sd_bus_process(bus, nullptr)) == 0)
            require(sd_bus_wait(bus, UINT64_MAX));
}

/// @return a connection to a bus that comes up
sd_bus* connectToBus(const std::string& address)
{
    for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
        sd_bus* bus = nullptr;
        require(sd_bus_new(&bus));
        require(sd_bus_set_address(bus, address.c_str()));
        require(sd_bus_set_bus_client(bus, 1));
        const char* name = nullptr;
        if (sd_bus_start(bus) >= 0 && sd_bus_get_unique_name(bus, &name) >= 0)
            return bus;
        sd_bus_unref(bus);
        poll(nullptr, 0, 1);
    }
    throw std::runtime_error("no message bus on " + address);
}

/// What both have in common: the client.
class BusClient : public Peer
{
public:
    ~BusClient() override { sd_bus_unref(bus); }

    void call() override
    {
        sd_bus_error error = SD_BUS_ERROR_NULL;
        sd_bus_message* reply = nullptr;
        require(sd_bus_call_method(bus, service, OBJECT, INTERFACE, METHOD, &error, &reply, "u", OPACITY));
        sd_bus_message_unref(reply);
    }

protected:
    explicit BusClient(const char* service) : service(service) {}

    sd_bus* bus = nullptr;

private:
    const char* const service; ///< null where there is no bus
};

/// Two ends of a pair of sockets.
class SdBusPeer : public BusClient
{
public:
    SdBusPeer() : BusClient(nullptr), sockets(makeSockets()), server([this] { runServer(); }) { close(sockets.server); }

    std::string getName() const override { return "sd-bus peer to peer"; }
    Goal getGoal() const override { return Goal::ratioAtMost(0.70); }

    void connect() override
    {
        require(sd_bus_new(&bus));
        require(sd_bus_set_fd(bus, sockets.client, sockets.client));
        require(sd_bus_start(bus));
    }

private:
    struct Sockets {
        int client;
        int server;
    };

    static Sockets makeSockets()
    {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
            throw std::runtime_error("no sockets");
        return {ends[0], ends[1]};
    }

    void runServer() const
    {
        close(sockets.client);
        sd_id128_t id;
        require(sd_id128_randomize(&id));
        sd_bus* end = nullptr;
        require(sd_bus_new(&end));
        require(sd_bus_set_fd(end, sockets.server, sockets.server));
        require(sd_bus_set_server(end, 1, id));
        require(sd_bus_start(end));
        serve(end);
    }

    const Sockets sockets;
    const Process server;
};

class DBusPeer : public BusClient
{
public:
    explicit DBusPeer(const RuntimeFolder& folder)
        : BusClient(SERVICE),
          address("unix:path=" + folder.getPath() + "/bus"),
          daemon(std::vector<std::string>{DBUS_DAEMON, "--session", "--nofork", "--nopidfile", "--address=" + address}),
          server([this] { runServer(); })
    {
    }

    std::string getName() const override { return "dbus-daemon"; }
    Goal getGoal() const override { return Goal::ratioAtMost(0.27); }

    void connect() override
    {
        bus = connectToBus(address);
        for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
            if (sd_bus_get_name_creds(bus, SERVICE, 0, nullptr) >= 0)
                return;
            poll(nullptr, 0, 1);
        }
        throw std::runtime_error("no server on the message bus");
    }

private:
    void runServer() const
    {
        sd_bus* const end = connectToBus(address);
        require(sd_bus_request_name(end, SERVICE, 0));
        serve(end);
    }

    const std::string address;
    const Process daemon;
    const Process server;
};

} // namespace

std::unique_ptr<Peer> makeSdBusPeer()
{
    return std::make_unique<SdBusPeer>();
}

std::unique_ptr<Peer> makeDBusPeer(const RuntimeFolder& folder)
{
    return std::make_unique<DBusPeer>(folder);
}

} // namespace Corvane::Benchmark
