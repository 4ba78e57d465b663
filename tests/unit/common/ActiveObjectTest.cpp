#include <corvane/common/ActiveObject.h>

#include <atomic>
#include <corvane/foundation/Exception.h>
#include <csignal>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <support/Await.h>
#include <support/CapturedOutput.h>
#include <thread>

namespace Corvane::Test
{
namespace
{

/// Runs a body that a test gives.
class Worker : public ActiveObject
{
public:
    explicit Worker(std::function<void(Worker&)> body, const char* name = "Worker")
        : ActiveObject(name), body(std::move(body))
    {
    }
    ~Worker() override { Worker::exit(); }
    int thread() override
    {
        ++runs;
        body(*this);
        ++ends;
        return 0;
    }
    using ActiveObject::isStopRequested;

    std::atomic<int> runs{0};
    std::atomic<int> ends{0};

private:
    std::function<void(Worker&)> body;
};

void untilStopped(Worker& worker)
{
    while (!worker.isStopRequested())
        std::this_thread::yield();
}

TEST(ActiveObject, RunsItsBodyOnAThreadOfItsOwn)
{
    Mailbox<std::thread::id> mailbox;
    Worker worker([&](Worker&) { mailbox.put(std::this_thread::get_id()); });
    worker.init();

    std::thread::id id;
    ASSERT_TRUE(mailbox.take(id));
    EXPECT_NE(id, std::this_thread::get_id());
}

TEST(ActiveObject, StartsNothingBeforeInit)
{
    Worker worker(untilStopped);
    worker.exit();

    EXPECT_EQ(worker.runs, 0);
}

TEST(ActiveObject, GivesTheThreadTheFirstFifteenBytesOfItsName)
{
    Mailbox<std::string> mailbox;
    const auto tellName = [&](Worker&) {
        char name[16];
        pthread_getname_np(pthread_self(), name, sizeof name);
        mailbox.put(name);
    };
    Worker fitting(tellName, "KeepAliveThread");
    Worker longer(tellName, "KeepAliveThread-and-more");

    for (Worker* worker : {&fitting, &longer}) {
        worker->init();
        std::string name;
        ASSERT_TRUE(mailbox.take(name));
        EXPECT_EQ(name, "KeepAliveThread");
    }
}

TEST(ActiveObject, WaitsForItsThreadOnDestruction)
{
    std::atomic<bool> ended{false};
    auto worker = std::make_unique<Worker>([&](Worker& self) {
        untilStopped(self);
        ended = true;
    });
    worker->init();
    ASSERT_TRUE(await([&] { return worker->runs == 1; }));
    EXPECT_FALSE(ended);

    worker.reset();

    EXPECT_TRUE(ended);
}

TEST(ActiveObject, WaitsForItsThreadOnExit)
{
    Worker worker(untilStopped);
    worker.init();
    worker.exit();
    EXPECT_EQ(worker.ends, worker.runs);
    worker.exit();
    EXPECT_LE(worker.runs, 1);
}

TEST(ActiveObject, IsNotStartedTwice)
{
    Worker worker(untilStopped);
    worker.init();
    ASSERT_TRUE(await([&] { return worker.runs == 1; }));
    worker.init();
    EXPECT_FALSE(worker.isStopRequested());
    worker.exit();

    EXPECT_EQ(worker.runs, 1);
}

TEST(ActiveObject, MayBeStartedAgainAfterExit)
{
    Worker worker(untilStopped);
    for (int round = 1; round <= 3; ++round) {
        worker.init();
        EXPECT_FALSE(worker.isStopRequested());
        ASSERT_TRUE(await([&] { return worker.runs == round; }));
        worker.exit();
        EXPECT_EQ(worker.ends, round);
    }
}

TEST(ActiveObject, MayBeStartedAgainAfterItsBodyHasReturned)
{
    Worker worker([](Worker&) {});
    worker.init();
    EXPECT_TRUE(await([&] {
        worker.init();
        return worker.ends >= 3;
    }));
}

TEST(ActiveObject, OnlyAsksWhenItIsToldToExitByItsOwnThread)
{
    Worker worker([](Worker& self) {
        self.exit();
        EXPECT_TRUE(self.isStopRequested());
    });
    worker.init();
    ASSERT_TRUE(await([&] { return worker.ends == 1; })) << "the thread must not wait for itself";
    worker.exit();
}

TEST(ActiveObject, LeavesAsynchronousSignalsToOtherThreads)
{
    Mailbox<sigset_t> mailbox;
    Worker worker([&](Worker&) {
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        mailbox.put(mask);
    });
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    worker.init();
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    sigset_t mask;
    ASSERT_TRUE(mailbox.take(mask));

    for (const int asynchronous : {SIGTERM, SIGINT, SIGHUP, SIGALRM, SIGCHLD, SIGUSR1, SIGPIPE, SIGRTMIN})
        EXPECT_TRUE(sigismember(&mask, asynchronous)) << strsignal(asynchronous);
    for (const int fault : {SIGILL, SIGABRT, SIGFPE, SIGSEGV, SIGBUS, SIGTRAP})
        EXPECT_FALSE(sigismember(&mask, fault)) << strsignal(fault);
    for (int signal = 1; signal < SIGRTMIN; ++signal)
        EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal)) << "of the caller: " << strsignal(signal);
}

/// New threads get a stack that no machine has.
class ImpossibleThreads
{
public:
    ImpossibleThreads()
    {
        pthread_attr_t attributes;
        pthread_getattr_default_np(&attributes);
        pthread_attr_getstacksize(&attributes, &size);
        constexpr std::size_t PAGE_MASK = 0xffff;
        pthread_attr_setstacksize(&attributes, (std::size_t(-1) / 8 * 7) & ~PAGE_MASK);
        pthread_setattr_default_np(&attributes);
        pthread_attr_destroy(&attributes);
    }
    ~ImpossibleThreads()
    {
        pthread_attr_t attributes;
        pthread_getattr_default_np(&attributes);
        pthread_attr_setstacksize(&attributes, size);
        pthread_setattr_default_np(&attributes);
        pthread_attr_destroy(&attributes);
    }

private:
    std::size_t size = 0;
};

TEST(ActiveObject, ThrowsCodeSevenWhenTheSystemRefusesAThread)
{
    Worker worker(untilStopped);
    {
        CapturedOutput error;
        const ImpossibleThreads impossible;
        try {
            worker.init();
            FAIL() << "no exception";
        } catch (const Exception& exception) {
            EXPECT_EQ(exception.getCode(), RETURN_REFUSED_BY_SYSTEM);
        }
        EXPECT_THAT(error.getMessages(), testing::ElementsAre(testing::StartsWith("cannot start thread Worker: ")));
    }
    worker.init();
    EXPECT_TRUE(await([&] { return worker.runs == 1; })) << "it may be tried again";
}

} // namespace
} // namespace Corvane::Test
