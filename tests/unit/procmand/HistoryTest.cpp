#include "box/Box.h"
#include "history/EndRecord.h"
#include "windows/WindowService.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <support/Await.h>
#include <support/TemporaryDirectory.h>
#include <sys/resource.h>

namespace Procmand
{
namespace
{

using testing::ElementsAre;
using testing::SizeIs;

std::string makeRecord(const std::string& text, std::size_t size = 0)
{
    return R"({"text":")" + text + std::string(size, 'x') + "\"}";
}

/// Lets no file of this process grow beyond a size, as a full disk would.
class FullDisk
{
public:
    explicit FullDisk(std::size_t room) : oldHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &oldLimit);
        rlimit limit = oldLimit;
        limit.rlim_cur = room;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &oldLimit);
        std::signal(SIGXFSZ, oldHandler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit oldLimit{};
    void (*oldHandler)(int);
};

class HistoryTest : public testing::Test
{
protected:
    Settings makeSettings() const
    {
        Settings settings;
        settings.stateFolder = folder.getPath();
        return settings;
    }
    std::size_t fileSize() const { return std::filesystem::file_size(path); }
    /// What a process manager that starts now would read.
    std::vector<std::string> readAnew() const { return History(path).read(); }

    Corvane::Test::TemporaryDirectory folder;
    const std::string path = folder.getPath() + "/history.jsonl";
};

/// The history as a part of the box.
class BoxHistoryTest : public HistoryTest
{
protected:
    /// Runs the loop until this holds, once in a test. @return whether it came to hold before the deadline
    bool runUntil(const std::function<bool()>& condition)
    {
        look = [this, &condition, end = std::chrono::steady_clock::now() + Corvane::Test::DEADLINE] {
            if (condition() || std::chrono::steady_clock::now() > end)
                box.loop.stop();
            else
                box.loop.schedule(std::chrono::milliseconds(10), look);
        };
        box.loop.post(look);
        box.loop.run();
        return condition();
    }

    Box box{makeSettings(), [](const std::string&, const std::string&) {}};
    EventLoop::Task look;
};

} // namespace

TEST_F(HistoryTest, IsOnlyEverAppendedToUntilItIsWrittenAnew)
{
    {
        History history(path);
        history.append(makeRecord("a"));
        history.append(makeRecord("b"));
    }
    History history(path);
    history.append(makeRecord("c"));
    EXPECT_THAT(history.read(), ElementsAre(makeRecord("a"), makeRecord("b"), makeRecord("c")));

    EXPECT_TRUE(history.rewrite({makeRecord("c")}));
    history.append(makeRecord("d"));
    EXPECT_THAT(history.read(), ElementsAre(makeRecord("c"), makeRecord("d")));
}

TEST_F(HistoryTest, IsNotWrittenAnewForItsOwnLength)
{
    const std::string record = makeRecord("", 1024 * 1024);
    History history(path);
    history.rewrite({record, record, record, record, record});
    EXPECT_FALSE(history.isLong()) << "so much matters today";
    for (int i = 0; i < 4; ++i)
        history.append(record);
    EXPECT_TRUE(history.isLong());
}

TEST_F(HistoryTest, ClosesOffWhatAnInterruptedWriteLeft)
{
    std::ofstream(path) << makeRecord("a") << "\n{\"record\":\"en";
    History history(path);
    history.append(makeRecord("b"));

    EXPECT_THAT(history.read(), ElementsAre(makeRecord("a"), "{\"record\":\"en", makeRecord("b")));
}

TEST_F(HistoryTest, CarriesOverAFullDiskWhatItCouldNotWriteAndEndsNoLineHalfway)
{
    History history(path);
    history.append(makeRecord("before"));
    {
        const FullDisk disk(fileSize() + 10);
        history.append(makeRecord("half of it fits"));
        history.append(makeRecord("nothing of it fits"));
        EXPECT_TRUE(history.isWaiting());
        EXPECT_EQ(fileSize(), makeRecord("before").size() + 1 + 10);
    }
    history.append(makeRecord("after"));

    EXPECT_FALSE(history.isWaiting());
    EXPECT_THAT(readAnew(), ElementsAre(makeRecord("before"), makeRecord("half of it fits"),
                                        makeRecord("nothing of it fits"), makeRecord("after")));
}

TEST_F(HistoryTest, DropsWhatWaitsOnceItIsTooMuchAndAsksToBeWrittenAnew)
{
    History history(path);
    history.append(makeRecord("before"));
    {
        const FullDisk disk(fileSize() + 10);
        for (int i = 0; i < 3; ++i)
            history.append(makeRecord("lost", History::WAITING_LIMIT / 3));
        EXPECT_TRUE(history.isLong());
    }
    history.append(makeRecord("after"));
    EXPECT_THAT(readAnew(), ElementsAre(makeRecord("before"), "{\"text\":\"l", makeRecord("after")));
    EXPECT_TRUE(history.isLong()) << "it lacks records";

    EXPECT_TRUE(history.rewrite({makeRecord("all")}));
    EXPECT_FALSE(history.isLong());
    EXPECT_THAT(readAnew(), ElementsAre(makeRecord("all")));
}

TEST_F(HistoryTest, LeavesTheFileAndWhatWaitsAloneWhereItCannotBeWrittenAnew)
{
    History history(path);
    history.append(makeRecord("a"));
    {
        const FullDisk disk(fileSize());
        history.append(makeRecord("b"));
        EXPECT_FALSE(history.rewrite({makeRecord("c", 1000)}));
    }
    history.retry();

    EXPECT_THAT(readAnew(), ElementsAre(makeRecord("a"), makeRecord("b")));
    EXPECT_FALSE(std::filesystem::exists(path + ".new")) << "a full disk has better use for its room";
}

TEST_F(HistoryTest, StopsGrowingWhereItCannotBeWrittenAnew)
{
    std::filesystem::create_directories(path + ".new/in the way");
    History history(path);
    for (int i = 0; i < 1000; ++i) {
        history.append(makeRecord("", 100 * 1024));
        if (history.isLong())
            history.rewrite({});
    }
    EXPECT_GT(fileSize(), History::LONG_GROWTH);
    EXPECT_LE(fileSize(), History::GROWTH_LIMIT);

    std::filesystem::remove_all(path + ".new");
    EXPECT_TRUE(history.isLong());
    EXPECT_TRUE(history.rewrite({makeRecord("all")}));
    history.append(makeRecord("more"));
    EXPECT_THAT(readAnew(), ElementsAre(makeRecord("all"), makeRecord("more")));
}

TEST_F(HistoryTest, IsNotWrittenAnewThroughALinkThatSomebodyPlanted)
{
    const std::string target = folder.getPath() + "/target";
    std::ofstream(target) << "precious";
    std::filesystem::create_symlink(target, path + ".new");
    History history(path);

    EXPECT_TRUE(history.rewrite({makeRecord("a")}));
    EXPECT_EQ(std::filesystem::file_size(target), 8U);
    EXPECT_THAT(readAnew(), ElementsAre(makeRecord("a")));
}

TEST_F(BoxHistoryTest, IsWrittenAnewWithWhatMattersOnceItIsLong)
{
    ManagedApplication& waiting = box.registry.add("waits");
    waiting.phase = ManagedApplication::Phase::WAITING;
    EndRecord record;
    record.uid = "crashes";
    record.standardError = std::string(4096, 'x');
    for (int i = 0; i < 1200; ++i)
        box.remember({.uid = record.uid, .text = record.write()});

    EXPECT_TRUE(runUntil([this] { return fileSize() < History::LONG_GROWTH; })) << "1200 ends take more";
    const Recovery recovery = Recovery::read(box.history.read());
    EXPECT_THAT(recovery.applications, SizeIs(1));
    EXPECT_TRUE(recovery.applications.at("waits").hasEnded);
    EXPECT_THAT(recovery.past, SizeIs(PAST_LIMIT));
}

TEST_F(BoxHistoryTest, IsWrittenAnewWhicheverRecordsMadeItLong)
{
    for (int i = 0; i < 5; ++i)
        box.note(makeRecord("", 1024 * 1024));
    EXPECT_TRUE(runUntil([this] { return fileSize() < 1024; }));
}

TEST_F(BoxHistoryTest, TriesByItselfToWriteWhatCouldNotBeWritten)
{
    {
        const FullDisk disk(fileSize() + 1);
        box.note(makeRecord("a"));
        EXPECT_THAT(box.history.read(), ElementsAre("{"));
    }
    EXPECT_TRUE(runUntil([this] { return box.history.read() == std::vector{makeRecord("a")}; }));
}

TEST_F(BoxHistoryTest, HasTheChangesOfWindowsOnceASecond)
{
    WindowService windows(box);
    const Corvane::ISurfaceManagement::CreationSettings settings;
    for (int i = 0; i < 1000; ++i)
        windows.release(windows.grant("flood", settings).getResourceIndex());
    EXPECT_THAT(box.history.read(), SizeIs(1)) << "the first grant";
    const auto kept = windows.grant("last", settings);

    EXPECT_TRUE(runUntil([this] { return box.history.read().size() == 2; }));
    const Recovery recovery = Recovery::read(box.history.read());
    ASSERT_THAT(recovery.windows, SizeIs(1));
    EXPECT_EQ(recovery.windows.front().uid, "last");
    EXPECT_EQ(recovery.windows.front().index, kept.getResourceIndex());
}

} // namespace Procmand
