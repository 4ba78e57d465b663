#include "Peers.h"

#include "window.grpc.pb.h"

#include <grpcpp/grpcpp.h>
#include <stdexcept>

namespace Corvane::Benchmark
{

namespace
{

using corvane::benchmark::Nothing;
using corvane::benchmark::Opacity;
using corvane::benchmark::WindowService;

constexpr unsigned int OPACITY = 128;
constexpr std::chrono::seconds DEADLINE{10};

class Implementation final : public WindowService::Service
{
    grpc::Status setOpacity(grpc::ServerContext*, const Opacity*, Nothing*) override { return grpc::Status::OK; }
};

class GrpcPeer : public Peer
{
public:
    explicit GrpcPeer(const RuntimeFolder& folder)
        : address("unix:" + folder.getPath() + "/grpc"), server([this] { runServer(); })
    {
    }

    std::string getName() const override { return "gRPC"; }
    Goal getGoal() const override { return Goal::ratioAtMost(0.30); }

    void connect() override
    {
        const auto channel = grpc::CreateChannel(address, grpc::InsecureChannelCredentials());
        if (!channel->WaitForConnected(std::chrono::system_clock::now() + DEADLINE))
            throw std::runtime_error("no gRPC server");
        stub = WindowService::NewStub(channel);
    }

    void call() override
    {
        grpc::ClientContext context;
        Opacity request;
        request.set_opacity(OPACITY);
        Nothing answer;
        if (!stub->setOpacity(&context, request, &answer).ok())
            throw std::runtime_error("gRPC fails");
    }

private:
    void runServer() const
    {
        Implementation implementation;
        grpc::ServerBuilder builder;
        builder.AddListeningPort(address, grpc::InsecureServerCredentials());
        builder.RegisterService(&implementation);
        builder.BuildAndStart()->Wait();
    }

    const std::string address;
    const Process server;
    std::unique_ptr<WindowService::Stub> stub;
};

} // namespace

std::unique_ptr<Peer> makeGrpcPeer(const RuntimeFolder& folder)
{
    return std::make_unique<GrpcPeer>(folder);
}

} // namespace Corvane::Benchmark
