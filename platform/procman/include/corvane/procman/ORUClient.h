#pragma once

#include <corvane/foundation/Export.h>
#include <corvane/interfaces/IWindowCompositing.h>
#include <corvane/procman/Client.h>
#include <corvane/procman/IResourceAcquisition.h>

namespace Corvane
{

/// A connection to the process manager of the box, the server "ORU": it hands out windows and composes them.
///
///     std::unique_ptr<ORUClient> client(ORUClient::create(Client::TYPE_WINDOW));
///     client->init();
///     const auto token = client->getResource(uid, settings);
///     client->setOpacity(token.getResourceIndex(), 128);
///
/// Thread-safe after `init()`. Every operation blocks its caller until the manager has answered, at most 5 s. Before
/// `init()` the operations throw Exception code 2. They throw RPCError when there is no manager, when it goes before it
/// has answered, when it takes too long, and when it refuses; with a manager that is back they work again.
class CORVANE_EXPORT ORUClient : public Client, public virtual IResourceAcquisition, public virtual IWindowCompositing
{
public:
    /// @return a new client, owned by the caller. It contacts nobody yet.
    /// @throws Exception  code 1 for a type that does not exist
    static ORUClient* create(Client::Type type);
};

} // namespace Corvane
