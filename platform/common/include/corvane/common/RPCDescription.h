#pragma once

#include <span>
#include <string_view>

/// What a server tells about its methods when it is asked for a description of itself.
namespace Corvane
{

/// A named value of a call or of a notification.
struct RPCParameterDescription {
    std::string_view name;
    std::string_view schema; ///< JSON Schema of the value, as JSON text
};

struct RPCMethodDescription {
    std::string_view interface;
    std::string_view method;
    std::string_view summary;
    std::span<const RPCParameterDescription> parameters;
    std::string_view resultSchema; ///< JSON Schema of the result, as JSON text
};

struct RPCNotificationDescription {
    std::string_view name; ///< "IWindow::onOpacityChange"
    std::string_view summary;
    std::span<const RPCParameterDescription> parameters;
};

/// Everything that one kind of server tells about itself; all of it static data.
struct RPCServerDescription {
    std::span<const RPCMethodDescription> methods;
    std::span<const RPCNotificationDescription> notifications;

    /// @return what is told of a method; null when nothing is
    const RPCMethodDescription* find(std::string_view interface, std::string_view method) const
    {
        for (const RPCMethodDescription& candidate : methods)
            if (candidate.interface == interface && candidate.method == method)
                return &candidate;
        return nullptr;
    }
};

} // namespace Corvane
