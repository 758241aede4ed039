// The row engine against its definition, one sample at a time; and its estimates against the exact lookup,
// where the two are most likely to differ: at the edges of pixels.
#include "projection/view_sampler.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <set>

#include "projection/estimate_kernels.h"
#include "projection/sample_panorama.h"
#include "tests/data_table.h"
#include "tests/test_panorama.h"

namespace skyvault {
namespace {

using test::TestPanorama;

/// Directions all around; every twelfth is an awkward one. That leaves enough others for estimates to be
/// made.
std::vector<Direction> MakeDirections(std::size_t count) {
    std::mt19937 random(5);
    std::normal_distribution<float> normal;
    std::vector<Direction> list(count);
    for (Direction& d : list) d = {normal(random), normal(random), normal(random)};
    std::size_t i = 0;
    for (const auto& [where, x, y, z] : TableOf<float, float, float>("awkward_directions")) {
        list.at(12 * i++) = {x, y, z};
    }
    // One direction of the last block meets a logo of 0.4, and just inside its rim.
    for (i = 2 * kBlockSize; i < count; ++i) list[i].y = std::fabs(list[i].y);
    list.back() = {0.36f, -1, 0.01f};
    return list;
}

struct Change {
    const char* name;
    void (*apply)(Modifications&);
};

const Change kChanges[] = {
    {"none", [](Modifications&) {}},
    {"turned", [](Modifications& m) { RotatePanorama(m, 0.7f, -0.4f, 1.1f); }},
    {"horizon up", [](Modifications& m) { ChangeHorizon(m, 0.37f); }},
    {"horizon down", [](Modifications& m) { ChangeHorizon(m, -0.6f); }},
    {"horizon off", [](Modifications& m) { ChangeHorizon(m, -1.5f); }},
    {"logo", [](Modifications& m) { ChangeLogoSize(m, 0.4f); }},
    {"logo picture", [](Modifications& m) { ChangeLogoSize(m, 0.8f); }},
    {"flip", [](Modifications& m) { m.flipHorizontal = true; }},
    {"mirrors", [](Modifications& m) { m.mirrorTopToBottom = m.mirrorFrontToBack = true; }},
    {"mirrored, then curved",
     [](Modifications& m) {
         m.mirrorTopToBottom = true;
         ChangeHorizon(m, 0.37f);
     }},
    {"all",
     [](Modifications& m) {
         m.flipHorizontal = m.mirrorFrontToBack = true;
         ChangeHorizon(m, 0.2f);
         ChangeLogoSize(m, 1.0f);
         RotatePanorama(m, 2.0f, 1.0f, -0.5f);
     }},
};

/// Both ways for one panorama: whatever differs is printed.
void ExpectRowsEqualSamples(TestPanorama& t, PixelFormat format, bool applyOrientation) {
    static const std::vector<Direction> directions = MakeDirections(2 * kBlockSize + 77);
    const ViewSampler sampler(
        t.panorama,
        {.format = format, .emptyColour = EmptyColour(t.settings), .applyOrientation = applyOrientation});
    const std::uint32_t bytes = BytesPerPixel(format);
    for (std::size_t first = 0; first < directions.size(); first += kBlockSize) {
        const int count = static_cast<int>(std::min<std::size_t>(kBlockSize, directions.size() - first));
        ViewSampler::Lookup lookup;
        DirectionBlock& block = lookup.directions;
        for (int i = 0; i < count; ++i) {
            const Direction& d = directions[first + static_cast<std::size_t>(i)];
            block.x[i] = d.x, block.y[i] = d.y, block.z[i] = d.z;
        }
        std::byte row[kBlockSize * 8], expected[8] = {};
        sampler.Find(lookup, count);
        sampler.Fetch(lookup, row);
        for (int i = 0; i < count; ++i) {
            const Direction& d = directions[first + static_cast<std::size_t>(i)];
            WritePixel(format, expected, t.Sample(d, applyOrientation));
            ASSERT_EQ(std::memcmp(expected, row + static_cast<std::size_t>(i) * bytes, bytes), 0)
                << "direction " << d.x << " " << d.y << " " << d.z << ", kernels " << Kernels().name;
        }
    }
}

class RowsAndSamples : public testing::TestWithParam<KernelSet> {
  protected:
    void SetUp() override {
        if (!UseKernels(GetParam())) GTEST_SKIP() << "this processor has no AVX2";
    }
    void TearDown() override { UseKernels(KernelSet::Fastest); }
};

TEST_P(RowsAndSamples, AgreeForEveryFormatSourceAndModification) {
    std::size_t logos = 0;
    enum Source { kEquirect, kFaces, kSomeFaces, kMixedFaces, kOnlyTop };
    for (const PixelFormat format : test::AllFormats()) {
        for (const Source source : {kEquirect, kFaces, kSomeFaces, kMixedFaces, kOnlyTop}) {
            TestPanorama t;
            t.settings.backgroundColour = Color8(200, 100, 50, 255);
            if (source == kEquirect) {
                t.SetEquirectangular(test::RandomImage(127, 61, format));
            } else {
                t.SetFaces(33, format);
                if (source == kSomeFaces) t.panorama.faces[2].Clear(), t.panorama.faces[5].Clear();
                if (source == kMixedFaces)
                    t.panorama.faces[4] = test::RandomImage(33, 33, PixelFormat::Rgba16);
                for (int f = 0; source == kOnlyTop && f < 6; ++f) {
                    if (f != 4) t.panorama.faces[f].Clear();
                }
            }
            for (const Change& change : kChanges) {
                ResetModifications(t.panorama.modifications);
                change.apply(t.panorama.modifications);
                for (const PixelFormat out : {format, PixelFormat::Rgb8, PixelFormat::Rgba8}) {
                    t.panorama.logoPicture.Clear();
                    if (t.panorama.modifications.logoSize == 0.8f) {
                        const PixelFormat logo = test::AllFormats()[++logos % 9];
                        t.panorama.logoPicture = test::RandomImage(19, 23, logo);
                    }
                    SCOPED_TRACE(testing::Message()
                                 << "format " << static_cast<int>(format) << " to " << static_cast<int>(out)
                                 << ", source " << source << ", " << change.name);
                    ExpectRowsEqualSamples(t, out, true);
                    if (testing::Test::HasFatalFailure()) return;
                }
            }
            ExpectRowsEqualSamples(t, format, false);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(KernelSets, RowsAndSamples, testing::Values(KernelSet::Baseline, KernelSet::Avx2),
                         [](const auto& p) { return p.param == KernelSet::Avx2 ? "Avx2" : "Baseline"; });

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
