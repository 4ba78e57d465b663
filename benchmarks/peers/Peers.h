#pragma once

#include <Benchmark.h>
#include <Process.h>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Corvane::Benchmark
{

/// What people would use instead: a server with a method that takes a number and gives nothing, and a client of it.
class Peer
{
public:
    virtual ~Peer() = default;

    virtual std::string getName() const = 0;
    /// What a call of the window may cost against this.
    virtual Goal getGoal() const = 0;
    /// Connects to the server, which may not be there yet. No process is started after that.
    virtual void connect() = 0;
    virtual void call() = 0;
};

/// Each of these starts its server.
std::unique_ptr<Peer> makeSdBusPeer();                           ///< sd-bus without a bus in between
std::unique_ptr<Peer> makeDBusPeer(const RuntimeFolder& folder); ///< sd-bus over dbus-daemon
std::unique_ptr<Peer> makeGrpcPeer(const RuntimeFolder& folder); ///< gRPC over a local socket, blocking calls

} // namespace Corvane::Benchmark
