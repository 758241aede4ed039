// What the tests of all generators need: palettes in files, a fixed seed, and faces compared.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "image/picture_files.h"
#include "platform/parallel_rows.h"
#include "projection/row_kernels.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {

inline constexpr std::uint32_t kFaceEdge = 256;  ///< the smallest a generator makes

/// Generators' tests start from the same seed and leave the program as it was.
struct GeneratorTest : testing::Test {
    const TemporaryFolder folder;

    GeneratorTest() { SetFixedSeed(20'240'601); }
    ~GeneratorTest() override {
        ClearFixedSeed();
        SetThreadCount(0);
        UseKernels(KernelSet::Fastest);
        FailAllocationsAfter(-1);
    }

    /// A palette of noise, in a file.
    std::wstring Palette(std::uint32_t width, std::uint32_t height, PixelFormat format = PixelFormat::Rgb8) {
        Image picture = RandomImage(width, height, format, 5);
        const std::wstring path =
            folder.Path(std::to_wstring(width) + L"x" + std::to_wstring(height) + L".png");
        EXPECT_TRUE(SavePicture(picture, path));
        return path;
    }
    std::wstring MissingPalette() const { return folder.Path(L"none.png"); }
};

/// Settings for faces of kFaceEdge, not antialiased.
struct GeneratorPanorama : TestPanorama {
    GeneratorPanorama() {
        settings.resolution0 = 0;
        settings.antialiasing = false;
    }
};

inline void ForEveryFacePixel(std::uint32_t size, const std::function<void(int face, int x, int y)>& visit) {
    for (int face = 0; face < kFaceCount; ++face) {
        for (int x = 0; x < static_cast<int>(size); ++x) {
            for (int y = 0; y < static_cast<int>(size); ++y) visit(face, x, y);
        }
    }
}

/// FNV-1a over the faces' bytes.
inline std::uint64_t Checksum(const Panorama& panorama) {
    std::uint64_t sum = 14695981039346656037u;
    for (const Image& face : panorama.faces) {
        for (std::size_t i = 0; i < face.ByteCount(); ++i) {
            sum = (sum ^ static_cast<std::uint64_t>(face.pixels[i])) * 1099511628211u;
        }
    }
    return sum;
}

/// How many pixels of all faces have the colour.
inline int CountPixels(const Panorama& panorama, const Color8& colour) {
    int count = 0;
    ForEveryFacePixel(panorama.faceSize, [&](int face, int x, int y) {
        count += panorama.faces[static_cast<std::size_t>(face)].GetPixel8(x, y) == colour ? 1 : 0;
    });
    return count;
}
inline constexpr int kAllPixels = 6 * 256 * 256;

/// Generates with both kernel sets and one and eight threads: always the same bytes, whose checksum is the
/// one every platform must come to. Progress rises to 1.
inline void ExpectTheSameEverywhere(const AppState& settings, std::uint64_t checksum,
                                    const std::wstring& text,
                                    const std::function<bool(Panorama&)>& generate) {
    for (const KernelSet set : {KernelSet::Baseline, KernelSet::Avx2}) {
        if (!UseKernels(set)) continue;
        for (const int threads : {1, 8}) {
            SetThreadCount(threads);
            TestPanorama t;
            t.settings = settings;
            t.feedback.BeginProgress();
            ASSERT_TRUE(generate(t.panorama));
            EXPECT_EQ(Checksum(t.panorama), checksum) << Kernels().name << ", threads " << threads;
            EXPECT_EQ(t.panorama.faceSize, kFaceEdge);
            float before = 0.0f;
            for (std::size_t i = 0; i < t.feedback.fractions.size(); ++i) {
                if (t.feedback.progressTexts[i] != text) continue;  // antialiasing starts anew
                EXPECT_GE(t.feedback.fractions[i], before);
                before = t.feedback.fractions[i];
            }
            EXPECT_EQ(before, 1.0f);
        }
    }
}

}  // namespace skyvault::test
