#pragma once

#include <corvane/common/RPCClient.h>
#include <corvane/procman/ORUClient.h>
#include <memory>

namespace Corvane
{

/// The client that calls the manager over its control server.
class RemoteClient : public ORUClient
{
public:
    explicit RemoteClient(Client::Type type);

    void init() override;

    ResourceToken getResource(const std::string& uid, const ISurfaceManagement::CreationSettings& settings) override;
    void releaseResource(const ResourceToken& token) override;

    void setVisibility(const unsigned int& index, bool visibility) override;
    bool getVisibility(const unsigned int& index) override;
    void setOpacity(const unsigned int& index, unsigned int opacity) override;
    unsigned int getOpacity(const unsigned int& index) override;
    void setZOrder(const unsigned int& index, unsigned int zOrder) override;
    unsigned int getZOrder(const unsigned int& index) override;
    void setLocation(const unsigned int& index, const Rect& location) override;
    Rect getLocation(const unsigned int& index) override;
    void bringToFront(const unsigned int& index) override;
    void sendToBack(const unsigned int& index) override;
    void bringForward(const unsigned int& index) override;
    void sendBackward(const unsigned int& index) override;

private:
    /// @param line  of the operation, for the log
    std::string call(const char* method, const std::string& parameters, int line = __builtin_LINE());
    template <class T>
    void setProperty(const char* method, unsigned int index, const char* key, const T& value,
                     int line = __builtin_LINE());
    template <class T>
    T getProperty(const char* method, unsigned int index, int line = __builtin_LINE());

    const Client::Type type;
    std::unique_ptr<RPCClient> connection; ///< from `init()` on
};

} // namespace Corvane
