#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/foundation/Singleton.h>
#include <string>

namespace Corvane
{

/// The process's contact to the process manager of the box, one to a process.
///
/// The first helper of a process becomes the instance of its Singleton, with one reference, as the last step of its
/// construction. A further one is left alone when it is deleted, by the Singleton's rule: it holds no more than its
/// token.
class CORVANE_EXPORT PlatformHelper : public Singleton<PlatformHelper>
{
public:
    /// @param token  authorization token of the application, may be empty
    explicit PlatformHelper(const std::string& token);
    ~PlatformHelper() override;

    /// Registers this process with the process manager (the server "ORU") under its uid. Never blocks, never throws:
    /// the message is left with the manager's socket and nobody waits for an answer; where there is no manager, that is
    /// one debug line.
    void startHelper() noexcept;

private:
    const std::string token;
    PlatformHelper* nextFurther = nullptr; ///< keeps the helpers that are left alone reachable
};

extern template class Singleton<PlatformHelper>;

} // namespace Corvane
