// What the tests of the generators share: pictures in files, a fixed seed, and faces looked at pixel by
// pixel.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "codecs/picture_files.h"
#include "platform/parallel_rows.h"
#include "projection/row_kernels.h"
#include "tests/temporary_folder.h"
#include "tests/test_panorama.h"

namespace skyvault::test {

/// Settings for faces of 256 pixels, the smallest there are, not antialiased.
struct GeneratorPanorama : TestPanorama {
    GeneratorPanorama() {
        settings.resolution0 = 0;
        settings.antialiasing = false;
    }
    Reason Generate(LayoutImport generate, const std::wstring& picture, PanoramaFormat format = {}) {
        return generate(From(picture, format), feedback, panorama).reason;
    }
};

/// Generators' tests start from the same seed and leave the program as it was.
struct GeneratorTest : testing::Test {
    const TemporaryFolder folder;

    GeneratorTest() { SetFixedSeed(20'240'601); }
    ~GeneratorTest() override {
        ClearFixedSeed();
        SetThreadCount(0);
        UseKernels(KernelSet::Fastest);
    }
    /// The picture in a file.
    std::wstring Save(Image picture) const {
        const std::wstring path = folder / std::to_wstring(folder.FileCount()) + L".png";
        EXPECT_TRUE(SavePicture(picture, path).IsDone());
        return path;
    }
};

/// Asks every step-th pixel of the six faces, beginning in another column in each row.
inline int CountPixels(const Panorama& panorama,
                       const std::function<bool(const Direction&, const Color8&)>& counts, int step = 1) {
    const int size = static_cast<int>(panorama.faceSize);
    int count = 0;
    for (int f = 0; f < kFaceCount; ++f) {
        const Image& face = panorama.faces[static_cast<std::size_t>(f)];
        for (int y = 0; y < size; ++y) {
            for (int x = y % step; x < size; x += step) {
                count +=
                    counts(FacePixelToDirection(size, static_cast<CubeFace>(f), x, y), face.GetPixel8(x, y));
            }
        }
    }
    return count;
}

}  // namespace skyvault::test
