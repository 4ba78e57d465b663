#pragma once

#include "launch/RestartMode.h"

#include <corvane/foundation/Deserializer.h>
#include <corvane/foundation/Serializer.h>
#include <corvane/interfaces/ISurfaceManagement.h>
#include <map>
#include <string>
#include <vector>

namespace Procmand
{

/// What is to be started, and how.
struct LaunchRequest {
    std::string name;    ///< what people call the application; empty for none
    std::string uid;     ///< the one that its launcher has chosen; empty: the process manager makes one
    std::string program; ///< a path, or a name that is looked for in PATH
    std::vector<std::string> arguments;
    std::map<std::string, std::string> environment; ///< beside the process manager's own
    std::string workingDirectory = "/";
    std::string applicationType;
    std::string applicationParameters;
    Corvane::ISurfaceManagement::CreationSettings compositingParameters;
    RestartMode restart = RestartMode::NEVER;
    std::string user;   ///< name of the one it runs as; empty: the process manager's own
    bool fresh = false; ///< what is started again gets neither place nor focus back

    /// @param text  a JSON object; everything but the program is optional
    /// @throws SerialError  something is missing or of the wrong kind
    static LaunchRequest read(const std::string& text);
    /// @return the JSON object that `read` reads, without the uid: it is that of the application once it is launched
    std::string write() const;
    /// @return what the application finds in CORVANE_APP_PARAMETERS
    std::string writeParameters(const std::string& token) const;
};

} // namespace Procmand
