#include "codecs/indexed_picture.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <unordered_map>

#include "codecs/written_rows.h"

namespace skyvault {
namespace {

constexpr std::uint8_t kOpaqueFrom = 128;  // a palette knows no half transparency
constexpr std::size_t kMostColours = 256;

/// Rows as 8-bit colours, with memory for one.
class ColourRows {
  public:
    ColourRows(const Image& image, PixelFormat wanted)
        : rows_(image, wanted, PixelFormat::Rgba8), row_(image.width) {}
    bool Ready() const { return rows_.Ready(); }
    const std::vector<Color8>& Get(std::uint32_t y) {
        static_assert(sizeof(Color8) == 4);
        rows_.Get(y, reinterpret_cast<std::byte*>(row_.data()));
        return row_;
    }

  private:
    WrittenRows rows_;
    std::vector<Color8> row_;
};

bool IsTransparent(const Color8& colour) {
    return colour.alpha < kOpaqueFrom;
}

std::uint32_t Key(const Color8& colour) {
    return std::uint32_t{colour.red} << 16 | std::uint32_t{colour.green} << 8 | colour.blue;
}

/// All colours of the picture with their indices, as long as there are no more than 256 with the
/// transparent one.
struct FewColours {
    std::unordered_map<std::uint32_t, std::uint8_t> indexOf;
    bool anyTransparent = false;
    bool tooMany = false;
};

FewColours CountColours(ColourRows& rows, std::uint32_t height) {
    FewColours found;
    for (std::uint32_t y = 0; y < height; ++y) {
        std::uint32_t last = std::numeric_limits<std::uint32_t>::max();
        for (const Color8& colour : rows.Get(y)) {
            if (IsTransparent(colour)) {
                found.anyTransparent = true;
                continue;
            }
            if (found.tooMany || Key(colour) == last) continue;
            last = Key(colour);
            found.indexOf.try_emplace(last, static_cast<std::uint8_t>(found.indexOf.size()));
            found.tooMany = found.indexOf.size() > kMostColours;
        }
        if (found.tooMany && found.anyTransparent) break;
    }
    found.tooMany |= found.indexOf.size() + found.anyTransparent > kMostColours;
    return found;
}

// Colours are counted in bins of 6 bits a channel.
constexpr int kBinBits = 6;
constexpr std::size_t kBinCount = std::size_t{1} << 3 * kBinBits;

std::size_t BinOf(int red, int green, int blue) {
    constexpr int kShift = 8 - kBinBits;
    return static_cast<std::size_t>((red >> kShift) << 2 * kBinBits | (green >> kShift) << kBinBits |
                                    blue >> kShift);
}

struct Bin {
    std::array<std::uint64_t, 3> sums{};
    std::uint64_t count = 0;

    double Mean(std::size_t channel) const {
        return static_cast<double>(sums[channel]) / static_cast<double>(count);
    }
};

/// Some of the bins, and how far their colours spread along their widest channel.
struct Box {
    std::size_t first, last;  // range of the list of bins
    std::size_t widest = 0;
    double spread = 0;

    Box(const std::vector<Bin>& bins, std::size_t from, std::size_t to) : first(from), last(to) {
        double count = 0, sum[3] = {}, squares[3] = {};
        for (std::size_t i = first; i < last; ++i) {
            const double weight = static_cast<double>(bins[i].count);
            count += weight;
            for (std::size_t channel = 0; channel < 3; ++channel) {
                const double mean = bins[i].Mean(channel);
                sum[channel] += mean * weight;
                squares[channel] += mean * mean * weight;
            }
        }
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const double s = squares[channel] - sum[channel] * sum[channel] / count;
            if (s > spread) {
                spread = s;
                widest = channel;
            }
        }
    }
};

std::vector<Color8> CutIntoColours(std::vector<Bin>& bins, std::size_t most) {
    std::vector<Box> boxes = {Box(bins, 0, bins.size())};
    while (boxes.size() < most) {
        const auto box = std::max_element(boxes.begin(), boxes.end(),
                                          [](const Box& a, const Box& b) { return a.spread < b.spread; });
        if (box->last - box->first < 2) break;
        const auto begin = bins.begin() + static_cast<std::ptrdiff_t>(box->first);
        const auto end = bins.begin() + static_cast<std::ptrdiff_t>(box->last);
        const std::size_t channel = box->widest;
        std::sort(begin, end,
                  [channel](const Bin& a, const Bin& b) { return a.Mean(channel) < b.Mean(channel); });
        // In two at the mean, each with something in it.
        double count = 0, sum = 0;
        for (auto bin = begin; bin != end; ++bin) {
            count += static_cast<double>(bin->count);
            sum += static_cast<double>(bin->sums[channel]);
        }
        auto cut =
            std::partition_point(begin, end, [&](const Bin& bin) { return bin.Mean(channel) < sum / count; });
        cut = std::clamp(cut, begin + 1, end - 1);
        const std::size_t middle = static_cast<std::size_t>(cut - bins.begin()), last = box->last;
        *box = Box(bins, box->first, middle);
        boxes.emplace_back(bins, middle, last);
    }
    std::vector<Color8> colours;
    for (const Box& box : boxes) {
        Bin whole;
        for (std::size_t i = box.first; i < box.last; ++i) {
            whole.count += bins[i].count;
            for (std::size_t channel = 0; channel < 3; ++channel)
                whole.sums[channel] += bins[i].sums[channel];
        }
        const auto mean = [&](std::size_t channel) {
            return static_cast<std::uint8_t>(whole.Mean(channel) + 0.5);
        };
        colours.emplace_back(mean(0), mean(1), mean(2), std::uint8_t{255});
    }
    return colours;
}

std::vector<Color8> ChooseColours(ColourRows& rows, std::uint32_t height, std::size_t most) {
    std::vector<Bin> bins(kBinCount);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (const Color8& colour : rows.Get(y)) {
            if (IsTransparent(colour)) continue;
            Bin& bin = bins[BinOf(colour.red, colour.green, colour.blue)];
            bin.sums[0] += colour.red;
            bin.sums[1] += colour.green;
            bin.sums[2] += colour.blue;
            ++bin.count;
        }
    }
    std::erase_if(bins, [](const Bin& bin) { return bin.count == 0; });
    return CutIntoColours(bins, most);
}

/// The nearest of the colours, worked out once per bin.
class NearestColour {
  public:
    explicit NearestColour(const std::vector<Color8>& colours) : colours_(colours), known_(kBinCount, -1) {}

    std::size_t operator()(int red, int green, int blue) {
        std::int16_t& nearest = known_[BinOf(red, green, blue)];
        if (nearest < 0) nearest = static_cast<std::int16_t>(Search(red, green, blue));
        return static_cast<std::size_t>(nearest);
    }

  private:
    std::size_t Search(int red, int green, int blue) const {
        std::size_t nearest = 0;
        int least = std::numeric_limits<int>::max();
        for (std::size_t i = 0; i < colours_.size(); ++i) {
            const int r = colours_[i].red - red, g = colours_[i].green - green, b = colours_[i].blue - blue;
            const int distance = r * r + g * g + b * b;
            if (distance < least) {
                least = distance;
                nearest = i;
            }
        }
        return nearest;
    }

    const std::vector<Color8>& colours_;
    std::vector<std::int16_t> known_;
};

/// Indices of the nearest colours; what a pixel is off goes to the pixels around that come later.
void Dither(ColourRows& rows, const Image& image, IndexedPicture& indexed) {
    using Error = std::array<int, 3>;  // in sixteenths
    const int width = static_cast<int>(image.width);
    std::vector<Error> here(image.width + 2), below(image.width + 2);  // one more on either side
    NearestColour nearestColour(indexed.colours);
    for (std::uint32_t y = 0; y < image.height; ++y) {
        const std::vector<Color8>& row = rows.Get(y);
        std::byte* const out = indexed.indices.get() + std::size_t{image.width} * y;
        std::fill(below.begin(), below.end(), Error{});
        const int step = y % 2 == 0 ? 1 : -1;
        for (int x = step > 0 ? 0 : width - 1; x >= 0 && x < width; x += step) {
            const Color8& colour = row[static_cast<std::size_t>(x)];
            if (IsTransparent(colour)) {
                out[x] = static_cast<std::byte>(indexed.transparent);
                continue;
            }
            Error& due = here[static_cast<std::size_t>(x + 1)];
            const int red = std::clamp(colour.red + due[0] / 16, 0, 255);
            const int green = std::clamp(colour.green + due[1] / 16, 0, 255);
            const int blue = std::clamp(colour.blue + due[2] / 16, 0, 255);
            const std::size_t index = nearestColour(red, green, blue);
            out[x] = static_cast<std::byte>(index);
            const Color8& taken = indexed.colours[index];
            const Error error{red - taken.red, green - taken.green, blue - taken.blue};
            for (std::size_t channel = 0; channel < 3; ++channel) {
                here[static_cast<std::size_t>(x + 1 + step)][channel] += error[channel] * 7;
                below[static_cast<std::size_t>(x + 1 - step)][channel] += error[channel] * 3;
                below[static_cast<std::size_t>(x + 1)][channel] += error[channel] * 5;
                below[static_cast<std::size_t>(x + 1 + step)][channel] += error[channel];
            }
        }
        std::swap(here, below);
    }
}

void Look(ColourRows& rows, const Image& image, const FewColours& few, IndexedPicture& indexed) {
    indexed.colours.resize(few.indexOf.size());
    for (const auto& [key, index] : few.indexOf) {
        indexed.colours[index] =
            Color8(static_cast<std::uint8_t>(key >> 16), static_cast<std::uint8_t>(key >> 8),
                   static_cast<std::uint8_t>(key), 255);
    }
    for (std::uint32_t y = 0; y < image.height; ++y) {
        std::byte* out = indexed.indices.get() + std::size_t{image.width} * y;
        for (const Color8& colour : rows.Get(y)) {
            *out++ = static_cast<std::byte>(IsTransparent(colour) ? few.indexOf.size()
                                                                  : few.indexOf.at(Key(colour)));
        }
    }
}

}  // namespace

bool MakeIndexed(const Image& image, PixelFormat wanted, IndexedPicture& indexed) {
    indexed = IndexedPicture();
    if (!image.IsValid()) return false;
    try {
        ColourRows rows(image, wanted);
        indexed.indices = AllocateBytes(std::size_t{image.width} * image.height);
        if (!rows.Ready() || !indexed.indices) return false;
        const FewColours few = CountColours(rows, image.height);
        if (few.tooMany) {
            const std::size_t most = kMostColours - few.anyTransparent;
            indexed.colours = ChooseColours(rows, image.height, most);
        } else {
            Look(rows, image, few, indexed);
        }
        if (few.anyTransparent) {
            indexed.transparent = static_cast<int>(indexed.colours.size());
            indexed.colours.emplace_back(std::uint8_t{0}, std::uint8_t{0}, std::uint8_t{0}, std::uint8_t{0});
        }
        if (few.tooMany) Dither(rows, image, indexed);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace skyvault
