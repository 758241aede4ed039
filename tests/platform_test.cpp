#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/parallel_rows.h"
#include "platform/path_text.h"
#include "platform/system_text.h"
#include "platform/utf8.h"
#include "tests/made_files.h"

namespace skyvault {
namespace {

TEST(TextCase, IsTheSystemsForLettersBeyondAscii) {
    const std::wstring upper = L"PANOR\u00c4ME \u0178 \u03a9 \u0414.JPG1";
    const std::wstring lower = L"panor\u00e4me \u00ff \u03c9 \u0434.jpg1";
    EXPECT_EQ(UpperCase(L"Panor\u00e4me \u00ff \u03c9 \u0434.jpg1"), upper);
    EXPECT_EQ(LowerCase(upper), lower);
}

TEST(Utf8, EveryCharacterOfUnicodeComesBack) {
    std::u16string all;
    for (char32_t c = 1; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 61) {
        if (c >= 0xD800 && c < 0xE000) continue;
        if (c >= 0x10000) all += static_cast<char16_t>(0xD7C0 + (c >> 10));
        all += static_cast<char16_t>(c < 0x10000 ? c : 0xDC00 + (c & 0x3FF));
    }
    const std::wstring wide = FromUtf16(all);
    EXPECT_EQ(FromUtf8(ToUtf8(wide)), wide);
    EXPECT_EQ(ToUtf16(wide), all);
    EXPECT_EQ(ToUtf8(L"a\u00e9\u20ac\U0001F600"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(Utf8, DamageBecomesReplacementCharacters) {
    for (const DataRow& row : DataTable("damaged_utf8")) {
        const test::Bytes bytes = test::FromHex(row[1]);
        EXPECT_EQ(FromUtf8({reinterpret_cast<const char*>(bytes.data()), bytes.size()}), FromUtf8(row[2]))
            << row.where;
    }
    EXPECT_EQ(FromUtf8({"a\0b", 3}), std::wstring(L"a\0b", 3));
    EXPECT_EQ(FromUtf16(u"\xDC00\xD83D\xDE00\xD83Dz\xD83D"), L"\uFFFD\U0001F600\uFFFDz\uFFFD");
    EXPECT_EQ(ToUtf8(std::wstring{L'a', static_cast<wchar_t>(0xD800)}), "a\xEF\xBF\xBD");
}

TEST(PathText, IsCutAtTheLastSeparatorAndFullStop) {
    for (const DataRow& row : PathTable("path_text")) {
        SCOPED_TRACE(row.where);
        const std::wstring path = FromUtf8(row[0]);
        EXPECT_EQ(ToUtf8(FileNamePart(path)), row[1]);
        EXPECT_EQ(ToUtf8(FolderPart(path)), row[2]);
        EXPECT_EQ(ToUtf8(UpperExtension(path)), row[3]);
        EXPECT_EQ(ToUtf8(WithoutExtension(path)), row[4]);
    }
}

TEST(PathText, JoiningNeverDoublesOrLosesASeparator) {
    const std::wstring s(1, kPathSeparator);
    EXPECT_EQ(JoinPath(L"a", L"b"), L"a" + s + L"b");
    EXPECT_EQ(JoinPath(L"a\\", L"b"), s == L"/" ? L"a\\/b" : L"a\\b");
    EXPECT_EQ(JoinPath(L"a/", L"/b"), L"a/b");
    EXPECT_EQ(JoinPath(L"a", s + L"b"), L"a" + s + L"b");
    EXPECT_EQ(JoinPath(L"/", L"b"), L"/b");
    EXPECT_EQ(JoinPath(L"", L"b"), L"b");
}

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
    // No std::latch: where the system has no futex, libstdc++ 12 looks at the count before it takes its lock
    // and can so sleep through the last arrival.
    std::atomic<int> begun{0};
    ParallelBands(2, true, [&](int) {
        ++begun;
        while (begun < 2) std::this_thread::yield();
    });
    EXPECT_EQ(begun, 2);
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

}  // namespace
}  // namespace skyvault
