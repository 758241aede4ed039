#include "platform/parallel_rows.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/clock.h"

namespace skyvault {
namespace {

class ThreadCountGuard {
  public:
    explicit ThreadCountGuard(int count) { SetThreadCount(count); }
    ~ThreadCountGuard() { SetThreadCount(0); }
};

TEST(ParallelBands, EveryBandRunsOnceForAnyNumberOfThreads) {
    for (const int threads : {1, 2, 3, 8, 2}) {
        for (const int bands : {0, 1, 2, 7, 100}) {
            SCOPED_TRACE(testing::Message() << threads << " threads, " << bands << " bands");
            const ThreadCountGuard guard(threads);
            EXPECT_EQ(ThreadCount(), threads);
            std::vector<std::atomic<int>> runs(static_cast<std::size_t>(bands));
            std::atomic<int> running{0}, most{0};
            std::vector<int> reports;
            bool otherThread = false;
            const auto caller = std::this_thread::get_id();
            ParallelBands(
                bands, true,
                [&](int band) {
                    const int now = ++running;
                    for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);) {
                    }
                    ++runs[static_cast<std::size_t>(band)];
                    --running;
                },
                [&](int finished) {
                    if (std::this_thread::get_id() != caller) otherThread = true;
                    reports.push_back(finished);
                });
            for (const auto& count : runs) EXPECT_EQ(count, 1);
            EXPECT_LE(most, threads);
            EXPECT_FALSE(otherThread);
            ASSERT_FALSE(reports.empty());
            EXPECT_EQ(reports.back(), bands);
            for (std::size_t i = 1; i < reports.size(); ++i) EXPECT_LT(reports[i - 1], reports[i]);
        }
    }
}

TEST(ParallelBands, BandsReallyRunAtTheSameTime) {
    const ThreadCountGuard guard(2);
    std::atomic<int> arrived{0};
    ParallelBands(2, true, [&](int) {
        ++arrived;
        const std::uint32_t start = MillisecondClock();
        while (arrived < 2 && MillisecondClock() - start < 5000) SleepMilliseconds(1);
        EXPECT_EQ(arrived, 2);
    });
}

TEST(ParallelBands, WithoutParallelTheCallerWorksInOrder) {
    std::vector<int> order;
    const auto caller = std::this_thread::get_id();
    ParallelBands(5, false, [&](int band) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        order.push_back(band);
    });
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST(ParallelBands, LoopsInsideLoopsAndLoopsOfTwoThreadsEnd) {
    const ThreadCountGuard guard(4);
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

TEST(ParallelBands, ThousandsOfShortLoopsDoNotHang) {
    const ThreadCountGuard guard(3);
    long long sum = 0;
    std::vector<int> results(6);
    for (int loop = 0; loop < 3000; ++loop) {
        ParallelBands(6, true, [&](int band) {
            std::this_thread::yield();
            results[static_cast<std::size_t>(band)] = loop + band;
        });
        for (const int result : results) sum += result;
    }
    EXPECT_EQ(sum, 6LL * 2999 * 3000 / 2 + 3000LL * 15);
}

}  // namespace
}  // namespace skyvault
