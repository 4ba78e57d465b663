#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/SerialObject.h>
#include <string>

namespace Corvane
{

/// Launching of applications.
class CORVANE_EXPORT IApplicationManager
{
public:
    class LaunchParameters;
    virtual ~IApplicationManager() = default;
};

/// What an application is told when it is launched.
class CORVANE_EXPORT IApplicationManager::LaunchParameters : public SerialObject
{
public:
    LaunchParameters() = default;
    /// Reads the members "applicationType", "applicationParameters" and "authorizationToken" of the deserializer's
    /// current object, each optional; others are ignored.
    explicit LaunchParameters(Deserializer& deserializer);
    /// Reads `--application-type=`, `--application-parameters=` and `--authorization-token=`. Every other argument is
    /// the application's own and is left alone; of a repeated option the last one counts. `--` ends the options.
    LaunchParameters(int argc, char** argv);

    const std::string& getApplicationType() const { return applicationType; }
    const std::string& getApplicationParameters() const { return applicationParameters; }
    /// @return the token that names this process to the box; empty when none was given
    const std::string& getAuthorizationToken() const { return authorizationToken; }

    std::string getObjectType() const override;
    std::unique_ptr<SerialObject> clone() const override;
    using SerialObject::serialize;
    void serialize(Serializer& serializer) const override;
    ~LaunchParameters() override;

private:
    std::string applicationType;
    std::string applicationParameters;
    std::string authorizationToken;
};

} // namespace Corvane
