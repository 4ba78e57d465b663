#include "screen/CompositorThread.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <support/Await.h>

using namespace Procmand;
using Corvane::Test::Mailbox;

namespace
{

/// What a fake screen did, and what it is to do.
struct Events {
    Mailbox<std::string> log; ///< "show 2 uid", "save FILE", "closed"
    Mailbox<bool> mayShow;    ///< where `isSlow`, a scene is drawn when one arrives
    std::string showProblem;  ///< why nothing can be drawn
    std::string saveProblem;  ///< why nothing can be saved
    bool isSlow = false;
    std::thread::id thread; ///< the one that opened the screen
    bool usedByOneThread = true;
};

class FakeScreen : public IScreen
{
public:
    explicit FakeScreen(Events& events) : events(events) { events.thread = std::this_thread::get_id(); }
    ~FakeScreen() override { note("closed"); }

    void show(const Scene& scene) override
    {
        note("show " + std::to_string(scene.windows.size()) + " " + scene.focused);
        bool may = false;
        if (events.isSlow && !events.mayShow.take(may))
            throw std::runtime_error("the test has forgotten a scene");
        if (!events.showProblem.empty())
            throw std::runtime_error(events.showProblem);
    }
    void save(const std::string& file) override
    {
        note("save " + file);
        if (!events.saveProblem.empty())
            throw std::runtime_error(events.saveProblem);
    }

private:
    void note(const std::string& words)
    {
        events.usedByOneThread = events.usedByOneThread && events.thread == std::this_thread::get_id();
        events.log.put(words);
    }

    Events& events;
};

class DrawingThread : public testing::Test
{
protected:
    void start()
    {
        compositor = std::make_unique<CompositorThread>([this] { return std::make_unique<FakeScreen>(events); });
    }
    std::string nextEvent()
    {
        std::string event;
        return events.log.take(event) ? event : "nothing";
    }
    /// What comes of a screenshot.
    std::string takeScreenshot()
    {
        compositor->screenshot("box.png", [this](const std::string& problem) { answers.put(problem); });
        std::string answer;
        return answers.take(answer) ? answer : "no answer";
    }

    Events events;
    Mailbox<std::string> answers;
    std::unique_ptr<CompositorThread> compositor;
};

} // namespace

TEST_F(DrawingThread, DrawsWhatIsSetOnAThreadOfItsOwn)
{
    start();
    compositor->setWindows({{}, {}});
    EXPECT_EQ(nextEvent(), "show 2 ");
    compositor->setFocused("demo");
    EXPECT_EQ(nextEvent(), "show 2 demo");

    compositor.reset();
    EXPECT_EQ(nextEvent(), "closed");
    EXPECT_NE(events.thread, std::this_thread::get_id());
    EXPECT_TRUE(events.usedByOneThread);
}

TEST_F(DrawingThread, DrawsOnlyTheLatestOfTheScenesThatCameMeanwhile)
{
    events.isSlow = true;
    start();
    compositor->setWindows({{}});
    EXPECT_EQ(nextEvent(), "show 1 ");
    for (const char* uid : {"one", "two", "three"})
        compositor->setFocused(uid); // none of these calls waits for the screen
    events.mayShow.put(true);
    events.mayShow.put(true);

    EXPECT_EQ(nextEvent(), "show 1 three");
}

TEST_F(DrawingThread, SavesWhatWasSetBeforeTheScreenshotWasAskedFor)
{
    start();
    compositor->setFocused("demo");

    EXPECT_EQ(takeScreenshot(), "");
    EXPECT_EQ(nextEvent(), "show 0 demo");
    EXPECT_EQ(nextEvent(), "save box.png");
}

TEST_F(DrawingThread, TellsWhyAPictureCannotBeSaved)
{
    events.saveProblem = "the disk is full";
    start();

    EXPECT_EQ(takeScreenshot(), "the disk is full");
}

TEST_F(DrawingThread, TellsThatNothingIsDrawnUntilDrawingSucceedsAgain)
{
    events.showProblem = "no memory";
    start();
    compositor->setFocused("demo");
    EXPECT_EQ(takeScreenshot(), "nothing is drawn: no memory");

    events.showProblem.clear();
    compositor->setFocused("other");
    EXPECT_EQ(takeScreenshot(), "");
}

TEST_F(DrawingThread, AnswersEveryScreenshotBeforeItEnds)
{
    events.isSlow = true;
    start();
    compositor->setWindows({});
    EXPECT_EQ(nextEvent(), "show 0 ");
    for (const char* file : {"one", "two"})
        compositor->screenshot(file, [this](const std::string& problem) { answers.put("answered " + problem); });
    events.mayShow.put(true);
    compositor.reset();

    for (const char* event : {"save one", "save two", "closed"})
        EXPECT_EQ(nextEvent(), event);
    std::string answer;
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(answers.take(answer));
}

TEST_F(DrawingThread, GoesOnWithoutAScreen)
{
    compositor = std::make_unique<CompositorThread>(
        []() -> std::unique_ptr<IScreen> { throw std::runtime_error("no such screen"); });
    compositor->setWindows({{}});

    EXPECT_EQ(takeScreenshot(), "nothing is drawn: no such screen");
}

TEST(Compositor, InMemoryRefusesToBeLookedAt)
{
    const auto compositor = makeCompositor("memory");
    compositor->setWindows({{}});
    compositor->setFocused("demo");

    EXPECT_THROW(compositor->screenshot("box.png", {}), std::runtime_error);
    EXPECT_EQ(listCompositors().back(), "memory");
}
