#include "image/area_scale.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "image/pixel_rows.h"

namespace skyvault {
namespace {

float ToFloat(std::uint8_t value) {
    return value;
}
float ToFloat(std::uint16_t value) {
    return value;
}
float ToFloat(Half value) {
    return HalfToFloat(value);
}

template <typename Channel>
Channel FromFloat(float value) {
    if constexpr (std::is_same_v<Channel, Half>) {
        return FloatToHalf(value);
    } else {
        return static_cast<Channel>(value + 0.5f);
    }
}

/// The span of an axis that one new pixel covers, in source pixels.
struct Cover {
    std::uint32_t first, last;  // inclusive
    double begin, end;

    Cover(std::uint32_t index, std::uint32_t count, std::uint32_t sourceCount) {
        const double step = static_cast<double>(sourceCount) / count;
        begin = index * step;
        end = std::min(begin + step, static_cast<double>(sourceCount));
        first = std::min(static_cast<std::uint32_t>(begin), sourceCount - 1);
        last = std::min(static_cast<std::uint32_t>(std::ceil(end)) - 1, sourceCount - 1);
        last = std::max(first, last);
    }
    /// The share of source pixel i in the whole.
    float Weight(std::uint32_t i) const {
        const double covered = std::min(end, i + 1.0) - std::max(begin, static_cast<double>(i));
        return static_cast<float>(std::max(covered, 0.0) / (end - begin));
    }
};

template <typename Format>
bool Scale(const Image& source, Image& scaled) {
    using Channel = typename Format::Channel;
    constexpr int kChannels = Format::kChannels;
    const std::size_t sourceChannels = std::size_t{source.width} * kChannels;
    const ByteBuffer memory = AllocateBytes(sourceChannels * sizeof(float));
    if (!memory) return false;
    float* const sums = reinterpret_cast<float*>(memory.get());

    for (std::uint32_t y = 0; y < scaled.height; ++y) {
        const Cover rows(y, scaled.height, source.height);
        std::fill_n(sums, sourceChannels, 0.0f);
        for (std::uint32_t row = rows.first; row <= rows.last; ++row) {
            const float weight = rows.Weight(row);
            const std::byte* const from = source.Row(row);
            for (std::size_t i = 0; i < sourceChannels; ++i) {
                Channel value;
                std::memcpy(&value, from + i * sizeof(Channel), sizeof(Channel));
                sums[i] += ToFloat(value) * weight;
            }
        }
        std::byte* to = scaled.Row(y);
        for (std::uint32_t x = 0; x < scaled.width; ++x, to += Format::kBytes) {
            const Cover columns(x, scaled.width, source.width);
            float pixel[kChannels] = {};
            for (std::uint32_t column = columns.first; column <= columns.last; ++column) {
                const float weight = columns.Weight(column);
                for (int channel = 0; channel < kChannels; ++channel) {
                    pixel[channel] += sums[std::size_t{column} * kChannels + channel] * weight;
                }
            }
            for (int channel = 0; channel < kChannels; ++channel) {
                Format::Set(to, channel, FromFloat<Channel>(pixel[channel]));
            }
        }
    }
    return true;
}

}  // namespace

Image ScaleByArea(const Image& source, std::uint32_t width, std::uint32_t height) {
    if (!source.IsValid()) return Image();
    Image scaled(width, height, source.format);
    if (!scaled.IsValid()) return Image();
    bool done = false;
    WithFormat(source.format, [&](auto tag) { done = Scale<FormatTraits<tag.value>>(source, scaled); });
    if (!done) scaled.Clear();
    return scaled;
}

bool ScaleInto(const PictureSize& target, Image& image) {
    if (target.width < 1 || target.height < 1) return true;
    const PictureSize size{image.width, image.height};
    const PictureSize fitted = FitInto(size, target);
    if (fitted != size) image = ScaleByArea(image, fitted.width, fitted.height);
    return image.IsValid();
}

}  // namespace skyvault
