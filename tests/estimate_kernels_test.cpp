// Estimates against the whole way: every lane that is not doubtful has the very same pixel.
#include "projection/estimate_kernels.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "projection/modifications.h"

namespace skyvault {
namespace {

constexpr std::uint64_t kOrigin = 4096;

/// Directions where rounding matters: all around, near the zenith and nadir, on faces, along the horizon,
/// beside the seam, beside the edges between faces, and in planes of two axes, where a zero has a sign.
DirectionBlock Directions(int kind, std::mt19937& random) {
    std::normal_distribution<float> normal;
    std::uniform_real_distribution<float> face(-1.0f, 1.0f);
    DirectionBlock block;
    for (int i = 0; i < kBlockSize; ++i) {
        float x = normal(random), y = normal(random), z = normal(random);
        if (kind == 1) x *= 0.01f, z *= 0.01f;
        if (kind == 2) x *= 1e-3f, z *= 1e-3f;
        if (kind == 3) x = face(random), y = face(random), z = -1.0f;
        if (kind == 4) x = face(random), y = 1.0f, z = face(random);
        if (kind == 5) y *= 0.01f;
        if (kind == 6) x *= 1e-4f;
        if (kind == 7) z = x * (1.0f + 1e-5f * face(random));
        if (kind == 8) x = i % 2 == 0 ? x : -0.0f, z = i % 2 == 0 ? -0.0f : z;
        if (kind == 9) y = i % 2 == 0 ? 0.0f : -0.0f;
        block.x[i] = x, block.y[i] = y, block.z[i] = z;
    }
    return block;
}
constexpr int kKinds = 10;

/// Lanes whose pixel is said to be certain and is another; adds up the doubtful ones.
int CountWrong(const DirectionBlock& raw, const Modifications& modifications, std::uint32_t width, bool faces,
               int& doubtfulLanes) {
    EstimateTurn turn;
    turn.turned = !modifications.orientation.isIdentity;
    for (int i = 0; i < 3; ++i) std::copy_n(modifications.orientation.m[i], 3, turn.m[i]);
    FacesInMemory six;
    six.grid = {width / 4, width / 4 * 3, 3};
    six.origin = kOrigin;
    // Not in their order, as memory gives them.
    for (std::uint32_t f = 0; f < 6; ++f) six.bases[f] = (f * 5 + 3) % 6 * six.grid.size * six.grid.stride;
    const EquirectGrid grid{width, width / 2, width * 3, 3, kOrigin};

    std::uint64_t estimated[kBlockSize], defined[kBlockSize];
    DoubtfulLanes doubtful;
    DirectionBlock d = raw;
    const RowKernels& kernels = Kernels();
    // Faces' directions are given unit length twice.
    for (int i = 0; i < 2; ++i) kernels.normalize(d.x, d.y, d.z, kBlockSize);
    if (turn.turned) kernels.transform(d.x, d.y, d.z, kBlockSize, modifications.orientation);
    if (faces) {
        Estimates().faces(raw, kBlockSize, six, turn, estimated, doubtful);
        std::int32_t chosen[kBlockSize];
        kernels.cubeOffsets(d.x, d.y, d.z, kBlockSize, six.grid, chosen, defined);
        for (int i = 0; i < kBlockSize; ++i) defined[i] += kOrigin + six.bases[chosen[i]];
    } else {
        Estimates().equirect(raw, kBlockSize, grid, turn, estimated, doubtful);
        kernels.equirectOffsets(d.x, d.y, d.z, kBlockSize, grid, defined);
    }
    const std::set<int> skipped(doubtful.lanes, doubtful.lanes + doubtful.count);
    EXPECT_EQ(static_cast<int>(skipped.size()), doubtful.count) << "a lane listed twice";
    doubtfulLanes += doubtful.count;
    int wrong = 0;
    for (int i = 0; i < kBlockSize; ++i) wrong += skipped.count(i) == 0 && estimated[i] != defined[i];
    return wrong;
}

TEST(Estimates, AreTheDefinedPixelsWhereTheyAreCertain) {
    Modifications turned;
    RotatePanorama(turned, 0.7f, 0.5f, 0.3f);
    for (const KernelSet set : {KernelSet::Baseline, KernelSet::Avx2}) {
        if (!UseKernels(set)) continue;
        for (const std::uint32_t width : {64u, 4096u, 8192u, 20000u}) {
            for (const Modifications& modifications : {Modifications(), turned}) {
                for (const bool faces : {false, true}) {
                    std::mt19937 random(3);
                    for (int kind = 0; kind < kKinds; ++kind) {
                        constexpr int kBlocks = 60;
                        int wrong = 0, doubtful = 0;
                        for (int i = 0; i < kBlocks; ++i) {
                            const DirectionBlock block = Directions(kind, random);
                            wrong += CountWrong(block, modifications, width, faces, doubtful);
                        }
                        SCOPED_TRACE(testing::Message()
                                     << Kernels().name << ", width " << width << ", directions " << kind
                                     << (faces ? ", faces" : "")
                                     << (modifications.orientation.isIdentity ? "" : ", turned"));
                        EXPECT_EQ(wrong, 0);
                        // All around, it is few that have to go the whole way.
                        const int few = kBlocks * kBlockSize / (width > 8192 ? 10 : 30);
                        EXPECT_LT(doubtful, kind == 0 ? few : kBlocks * kBlockSize + 1);
                    }
                }
            }
        }
    }
    UseKernels(KernelSet::Fastest);
}

TEST(Estimates, DoubtWhatIsNoDirection) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    DirectionBlock block{};
    block.x[1] = nan, block.z[1] = 1.0f;
    block.y[2] = nan, block.x[2] = 1.0f;
    block.z[3] = nan, block.y[3] = 1.0f;
    block.y[4] = nan, block.z[4] = -2.0f;
    for (const KernelSet set : {KernelSet::Baseline, KernelSet::Avx2}) {
        if (!UseKernels(set)) continue;
        int doubtful = 0;
        for (const bool faces : {false, true}) {
            CountWrong(block, {}, 8192, faces, doubtful);
            EXPECT_EQ(doubtful, kBlockSize) << Kernels().name << (faces ? ", faces" : "");
            doubtful = 0;
        }
    }
    UseKernels(KernelSet::Fastest);
}

}  // namespace
}  // namespace skyvault
