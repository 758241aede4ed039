#include "platform/parallel_rows.h"

#include <gtest/gtest.h>

#include <atomic>
#include <numeric>
#include <thread>
#include <vector>

#include "platform/clock.h"

namespace skyvault {
namespace {

class ParallelLoops : public testing::Test {
  protected:
    ~ParallelLoops() override { SetThreadCount(0); }
};

TEST_F(ParallelLoops, EveryBandRunsOnceForAnyNumberOfThreads) {
    for (const int threads : {1, 2, 3, 8, 2}) {
        for (const int bands : {0, 1, 2, 7, 100}) {
            SCOPED_TRACE(testing::Message() << threads << " threads, " << bands << " bands");
            SetThreadCount(threads);
            std::vector<std::atomic<int>> runs(static_cast<std::size_t>(bands));
            std::atomic<int> running{0};
            std::vector<int> reports;
            const auto caller = std::this_thread::get_id();
            ParallelBands(
                bands, true,
                [&](int band) {
                    EXPECT_LE(++running, threads);
                    std::this_thread::yield();
                    ++runs[static_cast<std::size_t>(band)];
                    --running;
                },
                [&](int finished) {
                    EXPECT_EQ(std::this_thread::get_id(), caller);
                    EXPECT_TRUE(reports.empty() || finished > reports.back());
                    reports.push_back(finished);
                });
            for (const auto& count : runs) EXPECT_EQ(count, 1);
            ASSERT_FALSE(reports.empty());
            EXPECT_EQ(reports.back(), bands);
        }
    }
}

TEST_F(ParallelLoops, BandsReallyRunAtTheSameTime) {
    SetThreadCount(2);
    // Neither band ends before the other has begun.
    std::atomic<int> arrived{0};
    ParallelBands(2, true, [&](int) {
        ++arrived;
        for (int i = 0; i < 30000 && arrived < 2; ++i) SleepMilliseconds(1);
        EXPECT_EQ(arrived, 2);
    });
}

TEST_F(ParallelLoops, WithoutParallelTheCallerWorksInOrder) {
    SetThreadCount(4);
    std::vector<int> order;
    const auto caller = std::this_thread::get_id();
    ParallelBands(5, false, [&](int band) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        order.push_back(band);
    });
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST_F(ParallelLoops, LoopsInsideLoopsAndLoopsOfTwoThreadsEnd) {
    SetThreadCount(4);
    std::atomic<int> count{0};
    const auto nested = [&] {
        for (int i = 0; i < 50; ++i) {
            ParallelBands(4, true, [&](int) { ParallelBands(3, true, [&](int) { ++count; }); });
        }
    };
    std::thread other(nested);
    nested();
    other.join();
    EXPECT_EQ(count, 2 * 50 * 4 * 3);
}

TEST_F(ParallelLoops, AnotherThreadsLoopTakesNoBandsFromOneThatRuns) {
    SetThreadCount(2);
    // Two bands hold both threads until the other loop has run; two are still to come.
    std::atomic<int> count{0};
    std::atomic<bool> ended{false};
    ParallelBands(4, true, [&](int band) {
        if (band == 0) {
            std::thread([] { ParallelBands(2, true, [](int) {}); }).join();
            ended = true;
        }
        while (band == 1 && !ended) std::this_thread::yield();
        ++count;
    });
    EXPECT_EQ(count, 4);
}

TEST_F(ParallelLoops, ThousandsOfShortLoopsDoNotHang) {
    SetThreadCount(3);
    std::vector<int> results(6);
    for (int loop = 0; loop < 3000; ++loop) {
        ParallelBands(6, true, [&](int band) {
            std::this_thread::yield();
            results[static_cast<std::size_t>(band)] = loop + band;
        });
        EXPECT_EQ(std::accumulate(results.begin(), results.end(), 0), 6 * loop + 15);
    }
}

}  // namespace
}  // namespace skyvault
