#pragma once

#include <corvane/interfaces/IApplicationManager.h>
#include <corvane/interfaces/ISurfaceManagement.h>

namespace Corvane
{

/// Launching of window applications.
class CORVANE_EXPORT IWindowManager
{
public:
    class LaunchParameters;
    virtual ~IWindowManager() = default;
};

/// What a window application is told when it is launched: the parameters of any application, and its surface's
/// settings.
class CORVANE_EXPORT IWindowManager::LaunchParameters : public IApplicationManager::LaunchParameters
{
public:
    LaunchParameters() = default;
    /// Reads, besides an application's own members, "compositingParameters" of the deserializer's current object.
    explicit LaunchParameters(Deserializer& deserializer);
    /// Reads, besides an application's own options, `--session-index=`, `--location=X,Y,W,H`, `--z-order=`,
    /// `--opacity=` (0 to 255) and `--visibility=true|false`.
    /// @throws Exception  code 1 for a value that cannot be read, after a line that names the option
    LaunchParameters(int argc, char** argv);

    const ISurfaceManagement::CreationSettings& getCompositingParameters() const { return compositingParameters; }

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~LaunchParameters() override;

private:
    ISurfaceManagement::CreationSettings compositingParameters;
};

} // namespace Corvane
