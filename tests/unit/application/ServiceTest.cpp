#include "ApplicationFixture.h"

#include <corvane/common/Service.h>
#include <gmock/gmock.h>

namespace Corvane::Test
{
namespace
{

/// A service as its author writes it.
class VolumeService : public TestApplication, public Service
{
public:
    std::string getUid() override { return Application::getUid(); }
    void createAuthorizationToken(unsigned int, MapObject<MapObject<int>>) override {}
    void deleteAuthorizationToken(unsigned int) override {}
};

TEST_F(ApplicationTest, ServiceIsAnApplicationAndAnObservableAtOnce)
{
    VolumeService application;
    Service& service = application;
    RecordingListener listener;
    service.addListener(&listener);
    application.init();
    service.setState("caller", ILifecycleManagement::STATE_RUNNING);
    service.removeListener(&listener);

    EXPECT_EQ(service.getUid(), application.Application::getUid());
    EXPECT_THAT(listener.heard, testing::ElementsAre("UNINITIALIZED > LOADING", "LOADING > RUNNING"));
    EXPECT_EQ(static_cast<IApplication*>(&service),
              static_cast<IApplication*>(static_cast<Application*>(&application)));
}

} // namespace
} // namespace Corvane::Test
