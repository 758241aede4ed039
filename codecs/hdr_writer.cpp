#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "codecs/hdr_file.h"
#include "codecs/written_rows.h"
#include "platform/file_stream.h"
#include "platform/numeric.h"

namespace skyvault {
namespace {

/// The largest value of eight bits that is no more than the largest half.
constexpr float kLargestWritten = 255 * 256;

/// Red, green and blue, none below 0, with their common exponent. The largest takes all eight bits; what is
/// not a number becomes 0.
HdrPixel ShareExponent(const std::array<float, 3>& colour) {
    const float largest = std::max({0.0f, colour[0], colour[1], colour[2]});
    int exponent = 0;
    std::frexp(largest, &exponent);
    // Rounded up to 256, it takes the next exponent.
    if (std::ldexp(largest, 8 - exponent) >= 255.5f) ++exponent;
    if (largest == 0.0f) return {};
    HdrPixel pixel;
    for (std::size_t i = 0; i < 3; ++i) {
        const float scaled = std::ldexp(std::max(0.0f, colour[i]), 8 - exponent);
        pixel[i] = static_cast<std::byte>(static_cast<int>(scaled + 0.5f));
    }
    pixel[3] = static_cast<std::byte>(exponent + 128);
    return pixel;
}

/// Appends a channel in runs of at least four and stretches of anything else.
void AppendChannel(std::span<const HdrPixel> line, std::size_t channel, std::byte*& to) {
    constexpr std::size_t kMostRun = 127, kMostOther = 128, kLeastRun = 4;
    const auto runAt = [&](std::size_t x) {
        std::size_t end = x + 1;
        while (end < line.size() && end - x < kMostRun && line[end][channel] == line[x][channel]) ++end;
        return end - x;
    };
    for (std::size_t x = 0; x < line.size();) {
        const std::size_t run = runAt(x);
        if (run >= kLeastRun) {
            *to++ = static_cast<std::byte>(128 + run);
            *to++ = line[x][channel];
            x += run;
            continue;
        }
        std::size_t end = x + run;
        while (end < line.size() && end - x < kMostOther) {
            const std::size_t next = runAt(end);
            if (next >= kLeastRun) break;
            end = std::min(end + next, x + kMostOther);
        }
        *to++ = static_cast<std::byte>(end - x);
        for (; x < end; ++x) *to++ = line[x][channel];
    }
}

}  // namespace

bool WriteHdr(const Image& image, const std::wstring& path, PixelFormat format) {
    const WrittenRows rows(image, format, PixelFormat::RgbHalf);
    const std::size_t width = image.width;
    // Stretches that are no runs take a byte more for each 128.
    const ByteBuffer halves = AllocateBytes(6 * width), pixels = AllocateBytes(4 * width),
                     packed = AllocateBytes(4 * (width + width / 64 + 2));
    FileStream file(path, FileUse::Write);
    if (!rows.Ready() || !halves || !pixels || !packed || !file.IsOpen()) return false;
    const std::string head = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " + std::to_string(image.height) +
                             " +X " + std::to_string(width) + "\n";
    if (!file.Write(head.data(), head.size())) return false;
    const std::span<HdrPixel> line(reinterpret_cast<HdrPixel*>(pixels.get()), width);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        rows.Get(y, halves.get());
        for (std::size_t x = 0; x < width; ++x) {
            std::array<Half, 3> colour;
            std::memcpy(colour.data(), halves.get() + 6 * x, 6);
            std::array<float, 3> values;
            for (std::size_t c = 0; c < 3; ++c)
                values[c] = ClampFloat(HalfToFloat(colour[c]), 0.0f, kLargestWritten);
            line[x] = ShareExponent(values);
        }
        if (!HdrHasChannelRuns(image.width)) {
            if (!file.Write(line.data(), 4 * width)) return false;
            continue;
        }
        std::byte* end = packed.get();
        for (const std::size_t byte : {std::size_t{2}, std::size_t{2}, width >> 8, width & 255})
            *end++ = static_cast<std::byte>(byte);
        for (std::size_t channel = 0; channel < 4; ++channel) AppendChannel(line, channel, end);
        if (!file.Write(packed.get(), static_cast<std::size_t>(end - packed.get()))) return false;
    }
    return file.Close();
}

}  // namespace skyvault
