// Estimates against the exact lookup, where the two are most likely to differ: at the edges of pixels.
#include "projection/estimate_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <set>

#include "projection/direction.h"
#include "projection/modifications.h"

namespace skyvault {
namespace {

/// Edges to aim at, and how far from them roundings can part the two chains at worst, in widths and heights
/// of the picture and edges of a face. Random directions come to a third of that, so it is looked at by
/// itself whether lanes as near as this are listed.
enum Edge { kColumn, kRow, kFacePixel };
constexpr double kReach[] = {6.5e-7, 7e-7, 1.25e-6};

/// A vector that looks `off` times the reach beside an edge. A quarter looks near a pole, a quarter along the
/// seam or the border between two faces.
std::array<double, 3> Aim(Edge edge, double off, double width, std::mt19937& random) {
    std::uniform_real_distribution<double> both(-1.0, 1.0);
    const bool nearPole = random() % 4 == 0, border = random() % 4 == 0;
    const double size = width / 4, half = (size - 1) / 2, height = width / 2, beside = off * kReach[edge];
    const double facePixel = border ? half : std::floor(both(random) * half) + 0.5;
    std::array<double, 3> v = {(facePixel + beside * size) / half, both(random), 1.0};
    std::shuffle(v.begin(), v.end(), random);
    if (edge == kFacePixel) return v;

    double latitude = nearPole ? kHalfPiWide - std::pow(10.0, 2 * both(random) - 2) : std::asin(both(random));
    double longitude = kPiWide * both(random);
    if (edge == kRow) {
        latitude = ((std::round(latitude / kPiWide * height) + 0.5) / height + beside) * kPiWide;
    } else {
        const double growth = 1.0 + 0.23 * std::fabs(std::tan(latitude));
        const double column = (border ? height : std::round(both(random) * height)) + 0.5;
        longitude = (column / width + beside * growth) * 2.0 * kPiWide;
    }
    const double across = std::cos(latitude);
    return {across * std::sin(longitude), std::sin(latitude), across * std::cos(longitude)};
}

/// The lanes listed as near an edge; expects the exact lookup's pixel of all others.
std::set<int> Listed(const DirectionBlock& raw, const Matrix4& orientation, std::uint32_t width, bool faces) {
    const EquirectGrid grid{width, width / 2, width * 3, 3, 4096};
    FacesInMemory six{{width / 4, width / 4 * 3, 3}, 4096, {}};
    // Not in their order, as memory gives them.
    for (std::uint32_t f = 0; f < 6; ++f) six.bases[f] = (f * 5 + 3) % 6 * (width * width / 5 / 8 * 8);
    EstimateTurn turn;
    turn.turned = !orientation.isIdentity;
    for (int i = 0; i < 3; ++i) std::copy_n(orientation.m[i], 3, turn.m[i]);

    std::uint64_t estimated[kBlockSize], exact[kBlockSize];
    LanesNearEdges nearEdges;
    DirectionBlock d = raw;
    // Faces' directions are given unit length twice.
    for (int i = 0; i < 2; ++i) Kernels().normalize(d.x, d.y, d.z, kBlockSize);
    if (turn.turned) Kernels().transform(d.x, d.y, d.z, kBlockSize, orientation);
    if (faces) {
        std::int32_t chosen[kBlockSize];
        Estimates().faces(raw, kBlockSize, six, turn, estimated, nearEdges);
        Kernels().cubeOffsets(d.x, d.y, d.z, kBlockSize, six.grid, chosen, exact);
        for (int i = 0; i < kBlockSize; ++i) exact[i] += six.origin + six.bases[chosen[i]];
    } else {
        Estimates().equirect(raw, kBlockSize, grid, turn, estimated, nearEdges);
        Kernels().equirectOffsets(d.x, d.y, d.z, kBlockSize, grid, exact);
    }
    const std::set<int> listed(nearEdges.lanes, nearEdges.lanes + nearEdges.count);
    for (int i = 0; i < kBlockSize; ++i) {
        EXPECT_TRUE(estimated[i] == exact[i] || listed.contains(i));
    }
    return listed;
}

TEST(Estimates, AreTheExactPixelUnlessListed) {
    Modifications turned;
    RotatePanorama(turned, 0.7f, 0.5f, 0.3f);
    for (int row = 0; row < 48; ++row) {
        if (!UseKernels(row % 2 == 0 ? KernelSet::Baseline : KernelSet::Avx2)) continue;
        const std::uint32_t width = std::array{64u, 1000u, 8192u, 20000u}[row / 2 % 4];
        const Edge edge = static_cast<Edge>(row / 8 % 3);
        const Matrix4 orientation = row < 24 ? Matrix4() : turned.orientation;
        const auto& m = orientation.m;
        SCOPED_TRACE(testing::Message() << Kernels().name << ", width " << width << ", edge " << edge
                                        << (row < 24 ? "" : ", turned"));
        std::mt19937 random(3);
        std::uniform_real_distribution<double> both(-1.5, 1.5);
        std::size_t missed = 0, all = 0;
        for (int blocks = 0; blocks < 20; ++blocks) {
            DirectionBlock block;
            double off[kBlockSize];
            for (int i = 0; i < kBlockSize; ++i) {
                auto v = Aim(edge, off[i] = both(random), width, random);
                for (double& one : v) one = random() % 2 == 0 ? one : -one;
                float* const raw[] = {block.x, block.y, block.z};  // what the turn makes v
                for (int r = 0; r < 3; ++r)
                    raw[r][i] = static_cast<float>(v[0] * m[r][0] + v[1] * m[r][1] + v[2] * m[r][2]);
            }
            const std::set<int> listed = Listed(block, orientation, width, edge == kFacePixel);
            all += listed.size();
            for (int i = 0; i < kBlockSize; ++i) missed += std::fabs(off[i]) < 0.6 && !listed.contains(i);
        }
        EXPECT_EQ(missed, 0u) << "lanes within the reach of roundings";
        EXPECT_LT(all, 20u * kBlockSize * 4 / 5) << "lanes half as far again";
    }
    UseKernels(KernelSet::Fastest);
}

}  // namespace
}  // namespace skyvault
