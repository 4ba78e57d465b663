#include <atomic>
#include <corvane/foundation/Singleton.h>
#include <gtest/gtest.h>
#include <mutex>
#include <new>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace Corvane::Test
{

namespace
{

class Device : public Singleton<Device>
{
public:
    Device() { ++constructions; }
    ~Device() override
    {
        ++destructions;
        wasMutexHeld = !singletonMutex.try_lock();
        if (!wasMutexHeld)
            singletonMutex.unlock();
    }

    static bool hasInstance() { return instance != nullptr; }
    static unsigned int countReferences() { return references; }

    static inline std::atomic<int> constructions{0};
    static inline std::atomic<int> destructions{0};
    static inline bool wasMutexHeld = false;

    int value = 42;
};

/// The instance begins in the middle of this object, so that addresses of its parts differ.
class Prefix
{
public:
    virtual ~Prefix() = default;
    long padding = 7;
};

// G++ takes the deletion of a base that does not begin the object for the release of storage in its middle.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wfree-nonheap-object"
class CompoundDevice : public Prefix, public Device
{
};
#pragma GCC diagnostic pop

class FailingDevice : public Singleton<FailingDevice>
{
public:
    FailingDevice()
    {
        storage = this;
        if (fails)
            throw std::runtime_error("no device");
    }
    static unsigned int countReferences() { return references; }

    static inline bool fails = true;
    static inline void* storage = nullptr;
};

class SingletonTest : public testing::Test
{
protected:
    SingletonTest()
    {
        Device::constructions = 0;
        Device::destructions = 0;
    }
    ~SingletonTest() override { EXPECT_FALSE(Device::hasInstance()); }
};

/// Gives back bare storage. Out of line, so that the compiler does not take what it gets for freed.
[[gnu::noinline]] void giveBackStorage(void* storage)
{
    Singleton<Device>::operator delete(storage);
}

/// Ends an object that the Singleton left alone.
void dispose(Device* device)
{
    device->~Device();
    ::operator delete(static_cast<void*>(device));
}

} // namespace

TEST_F(SingletonTest, CreatesTheInstanceOnceAndCountsReferences)
{
    Device* const first = Singleton<Device>::getInstance<Device>();
    Device* const second = Singleton<Device>::getInstance<Device>();

    EXPECT_EQ(first, second);
    EXPECT_EQ(Device::constructions, 1);
    EXPECT_EQ(Device::countReferences(), 2U);
    delete first;
    delete second;
}

TEST_F(SingletonTest, DestroysTheInstanceWithTheLastReferenceOnly)
{
    Device* const device = Singleton<Device>::getInstance<Device>();
    Singleton<Device>::getInstance<Device>();

    delete device;
    EXPECT_EQ(Device::destructions, 0);
    EXPECT_EQ(device->value, 42);
    EXPECT_TRUE(Device::hasInstance());

    delete device;
    EXPECT_EQ(Device::destructions, 1);
    EXPECT_FALSE(Device::hasInstance());
}

TEST_F(SingletonTest, DestroysUnderTheMutexOfAllSingletons)
{
    Device::wasMutexHeld = false;
    delete Singleton<Device>::getInstance<Device>();

    EXPECT_TRUE(Device::wasMutexHeld);
    EXPECT_TRUE(singletonMutex.try_lock()) << "the mutex must be free again";
    singletonMutex.unlock();
}

TEST_F(SingletonTest, CountsDownOutsideTheMutex)
{
    Device* const device = Singleton<Device>::getInstance<Device>();
    Singleton<Device>::getInstance<Device>();
    {
        const std::lock_guard<Mutex> guard(singletonMutex);
        delete device; // would never return if it took the mutex
        EXPECT_EQ(Device::countReferences(), 1U);
    }
    delete device;
}

TEST_F(SingletonTest, LeavesAPointerAloneThatIsNotTheInstance)
{
    Device* const device = Singleton<Device>::getInstance<Device>();
    Device* const foreign = new Device;

    delete foreign;
    EXPECT_EQ(Device::destructions, 0);
    EXPECT_EQ(foreign->value, 42);
    EXPECT_EQ(Device::countReferences(), 1U);

    dispose(foreign);
    delete device;
}

TEST_F(SingletonTest, LeavesEveryPointerAloneWhileThereIsNoInstance)
{
    Device* const foreign = new Device;

    delete foreign;

    EXPECT_EQ(Device::destructions, 0);
    dispose(foreign);
}

TEST_F(SingletonTest, AppliesTheSameRuleToBareStorage)
{
    Device* const device = Singleton<Device>::getInstance<Device>();
    Singleton<Device>::getInstance<Device>();
    Device* const foreign = new Device;

    giveBackStorage(foreign);
    giveBackStorage(nullptr);
    EXPECT_EQ(Device::countReferences(), 2U);

    giveBackStorage(device);
    EXPECT_EQ(Device::destructions, 0);
    giveBackStorage(device);
    EXPECT_EQ(Device::destructions, 1);
    dispose(foreign);
}

TEST_F(SingletonTest, KnowsTheInstanceByAnyOfItsBases)
{
    CompoundDevice* const device = Singleton<Device>::getInstance<CompoundDevice>();
    Singleton<Device>::getInstance<CompoundDevice>();
    Singleton<Device>::getInstance<CompoundDevice>();
    EXPECT_EQ(device->padding, 7);

    delete static_cast<Device*>(device);
    delete static_cast<Prefix*>(device);
    EXPECT_EQ(Device::destructions, 0);
    delete device;
    EXPECT_EQ(Device::destructions, 1);
}

TEST_F(SingletonTest, CreatesANewInstanceAfterTheLastReference)
{
    delete Singleton<Device>::getInstance<Device>();
    delete Singleton<Device>::getInstance<Device>();

    EXPECT_EQ(Device::constructions, 2);
    EXPECT_EQ(Device::destructions, 2);
}

TEST_F(SingletonTest, LeavesTheStorageOfAConstructorThatThrewAlone)
{
    FailingDevice::fails = true;
    EXPECT_THROW(Singleton<FailingDevice>::getInstance<FailingDevice>(), std::runtime_error);
    EXPECT_EQ(FailingDevice::countReferences(), 0U);
    void* const storage = FailingDevice::storage;

    FailingDevice::fails = false;
    delete Singleton<FailingDevice>::getInstance<FailingDevice>();
    ::operator delete(storage); // a second free if the rule was broken, which a sanitizer or the C library reports
}

TEST_F(SingletonTest, GivesEveryThreadTheSameInstance)
{
    constexpr int THREADS = 8;
    std::vector<Device*> found(THREADS);
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i)
        threads.emplace_back([&found, i] { found[i] = Singleton<Device>::getInstance<Device>(); });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(std::set<Device*>(found.begin(), found.end()).size(), 1U);
    EXPECT_EQ(Device::constructions, 1);
    EXPECT_EQ(Device::countReferences(), static_cast<unsigned int>(THREADS));
    for (Device* const device : found)
        delete device;
    EXPECT_EQ(Device::destructions, 1);
}

TEST_F(SingletonTest, SurvivesThatReferencesAreTakenWhileOthersAreGivenBack)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int n = 0; n < 5000; ++n) {
                Device* const device = Singleton<Device>::getInstance<Device>();
                ASSERT_EQ(device->value, 42);
                delete device;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(Device::constructions, Device::destructions);
}

} // namespace Corvane::Test
