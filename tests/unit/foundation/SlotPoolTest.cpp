#include "SlotPool.h"
#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <set>
#include <thread>
#include <vector>

namespace Corvane::Test
{

namespace
{

struct Piece {
    void recycle() { ++recycled; }
    int recycled = 0;
    std::atomic<bool> isUsed{false};
};

constinit SlotPool<Piece, 2> unfilled;
constinit SlotPool<Piece, 2> filled;
constinit SlotPool<Piece, 4> shared;

} // namespace

TEST(SlotPoolTest, TakesEverythingFromTheHeapUntilItIsFilled)
{
    Piece* const piece = unfilled.claim();
    unfilled.giveBack(piece); // a leak, found by the sanitizer, unless it is deleted

    Piece* const next = unfilled.claim();
    EXPECT_EQ(next->recycled, 0);
    unfilled.giveBack(next);
}

TEST(SlotPoolTest, HandsEachSlotToOneAtATimeAndThenTurnsToTheHeap)
{
    filled.fill();
    Piece* const first = filled.claim();
    Piece* const second = filled.claim();
    Piece* const third = filled.claim();
    EXPECT_EQ((std::set<Piece*>{first, second, third}.size()), 3U);
    filled.giveBack(third);

    filled.giveBack(second);
    EXPECT_EQ(filled.claim(), second);
    EXPECT_EQ(second->recycled, 1);

    filled.giveBack(first);
    EXPECT_EQ(filled.claim(), first);
}

TEST(SlotPoolTest, ShowsAVisitorWhatNobodyHasClaimed)
{
    static SlotPool<Piece, 3> visited;
    visited.fill();
    const Piece* const claimed = visited.claim();
    std::vector<const Piece*> seen;
    visited.visitFree([&seen](const Piece& piece) { seen.push_back(&piece); });

    EXPECT_EQ(seen.size(), 2U);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), claimed), 0);
    EXPECT_EQ(visited.claim(), seen.front()) << "free again";
}

TEST(SlotPoolTest, NeverGivesOneObjectToTwoThreads)
{
    shared.fill();
    std::atomic<int> collisions{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 6; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 5000; ++n) {
                Piece* const piece = shared.claim();
                collisions += piece->isUsed.exchange(true) ? 1 : 0;
                piece->isUsed = false;
                shared.giveBack(piece);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(collisions, 0);
}

} // namespace Corvane::Test
