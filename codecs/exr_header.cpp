#include "codecs/exr_header.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "codecs/bytes.h"
#include "codecs/picture_header.h"

namespace skyvault {
namespace {

constexpr std::uint32_t kMagic = 20000630, kVersion = 2;
// Of the version's number.
constexpr std::uint32_t kVersionMask = 0xff, kTiledFlag = 0x200, kDeepFlag = 0x800, kPartsFlag = 0x1000;

/// Reads what is there from front to back; one read beyond the end makes all that follow fail.
class Reader {
  public:
    explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    bool Failed() const { return failed_; }
    std::size_t Position() const { return at_; }

    std::span<const std::byte> Take(std::size_t count) {
        failed_ = failed_ || count > bytes_.size() - at_;
        if (failed_) return {};
        at_ += count;
        return bytes_.subspan(at_ - count, count);
    }
    std::uint32_t Number() {
        const std::span<const std::byte> four = Take(4);
        return failed_ ? 0 : Little32(four.data());
    }
    std::uint8_t Byte() {
        const std::span<const std::byte> one = Take(1);
        return failed_ ? std::uint8_t{0} : std::to_integer<std::uint8_t>(one[0]);
    }
    /// Up to a zero byte, which is taken too.
    std::string_view Text() {
        const std::string_view rest(reinterpret_cast<const char*>(bytes_.data()) + at_, bytes_.size() - at_);
        const std::size_t length = rest.find('\0');
        if (length == std::string_view::npos) failed_ = true;
        if (failed_) return {};
        at_ += length + 1;
        return rest.substr(0, length);
    }

  private:
    std::span<const std::byte> bytes_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

/// Far enough from the ends of 32 bits that sizes and differences of places fit.
bool ReadWindow(Reader& from, ExrWindow& window) {
    constexpr std::int32_t kFarthest = 1 << 29;
    for (std::int32_t* const side : {&window.left, &window.top, &window.right, &window.bottom}) {
        *side = static_cast<std::int32_t>(from.Number());
        if (*side < -kFarthest || *side > kFarthest) return false;
    }
    return window.left <= window.right && window.top <= window.bottom;
}

struct ChannelName {
    std::string_view name;
    ExrType type = ExrType::Half;
    bool everyPixel = true;
};

bool ReadChannels(Reader from, std::vector<ChannelName>& channels) {
    for (std::string_view name = from.Text(); !name.empty(); name = from.Text()) {
        const std::uint32_t type = from.Number();
        from.Take(4);  // how the values are meant to be seen, and padding
        const std::uint32_t across = from.Number(), down = from.Number();
        if (from.Failed() || type > 2) return false;
        channels.push_back({name, static_cast<ExrType>(type), across == 1 && down == 1});
    }
    return !from.Failed() && !channels.empty();
}

/// Which of the picture's channels each one fills. Red, green and blue go before grey; what a file has
/// besides is left.
Outcome AssignChannels(const std::vector<ChannelName>& names, ExrHeader& header) {
    const auto has = [&](std::string_view name) {
        return std::any_of(names.begin(), names.end(),
                           [&](const ChannelName& channel) { return channel.name == name; });
    };
    const bool colour = has("R") || has("G") || has("B"), grey = has("Y"), alpha = has("A");
    Outcome notRgb = {.reason = Reason::CannotOpen, .cause = Cause::ColoursNotRgb};
    if (has("RY") || has("BY") || (!colour && !grey)) return notRgb;
    header.format = alpha ? PixelFormat::RgbaHalf : colour ? PixelFormat::RgbHalf : PixelFormat::GreyHalf;
    header.allChannels = !colour || (has("R") && has("G") && has("B"));
    const auto greys = static_cast<std::uint8_t>(alpha ? 3 : 1);
    for (const ChannelName& channel : names) {
        if (!channel.everyPixel) return notRgb;
        ExrChannel assigned{.type = channel.type, .first = 0, .count = 0};
        const std::size_t place = std::string_view("RGBA").find(channel.name);
        const bool one = channel.name.size() == 1 && place != std::string_view::npos;
        if (one && (colour || place == 3)) {
            assigned.first = static_cast<std::uint8_t>(place);
            assigned.count = 1;
        } else if (!colour && channel.name == "Y") {
            assigned.count = greys;
        }
        header.channels.push_back(assigned);
        header.pixelBytes += BytesOf(channel.type);
    }
    return {};
}

/// Lines that a compression packs together; 0 for one that is not read.
std::uint32_t LinesOf(ExrCompression compression) {
    switch (compression) {
        case ExrCompression::None:
        case ExrCompression::Rle:
        case ExrCompression::ZipLine:
            return 1;
        case ExrCompression::Zip:
        case ExrCompression::Pxr24:
            return 16;
        case ExrCompression::Piz:
            return 32;
    }
    return 0;
}

/// The claims against the file's size: no compression packs better than 1400 to 1, and each chunk takes its
/// place in the table and a header of its own.
bool Fits(const ExrHeader& header, std::uint64_t fileSize) {
    constexpr std::uint64_t kBestRatio = 1400, kLeastChunk = 8 + 8;
    const std::uint64_t pixels = std::uint64_t{header.data.Width()} * header.data.Height();
    return PlausibleSize(header.display.Width(), header.display.Height(), fileSize) &&
           header.ChunkCount() <= (fileSize - header.size) / kLeastChunk &&
           pixels <= fileSize * kBestRatio / header.pixelBytes &&
           header.ChunkBytes() <= std::numeric_limits<std::int32_t>::max();
}

}  // namespace

Outcome ReadExrHeader(std::span<const std::byte> start, std::uint64_t fileSize, ExrHeader& header) {
    Outcome failed = Failure(Reason::CannotOpen);
    Reader reader(start.first(std::min(start.size(), kExrHeaderLimit)));
    if (reader.Number() != kMagic) return failed;
    const std::uint32_t version = reader.Number();
    if ((version & kVersionMask) != kVersion) return failed;
    if ((version & kDeepFlag) != 0) return {.reason = Reason::CannotOpen, .cause = Cause::DeepPixels};
    if ((version & kPartsFlag) != 0) return {.reason = Reason::CannotOpen, .cause = Cause::SeveralParts};
    header.tiled = (version & kTiledFlag) != 0;

    std::vector<ChannelName> channels;
    bool hasData = false, hasDisplay = false, hasCompression = false;
    for (std::string_view name = reader.Text(); !name.empty(); name = reader.Text()) {
        reader.Text();  // the type, which the name implies
        const std::uint32_t size = reader.Number();
        const std::span<const std::byte> bytes = reader.Take(size);
        if (reader.Failed()) return failed;
        Reader value(bytes);
        if (name == "channels") {
            channels.clear();
            if (!ReadChannels(value, channels)) return failed;
        } else if (name == "compression") {
            hasCompression = true;
            header.compression = static_cast<ExrCompression>(value.Byte());
        } else if (name == "dataWindow") {
            hasData = ReadWindow(value, header.data);
        } else if (name == "displayWindow") {
            hasDisplay = ReadWindow(value, header.display);
        } else if (name == "tiles") {
            header.chunkWidth = value.Number();
            header.chunkHeight = value.Number();
        }
        if (value.Failed()) return failed;
    }
    header.size = reader.Position();
    if (reader.Failed() || channels.empty() || !hasData || !hasDisplay || !hasCompression) return failed;
    const std::uint32_t lines = LinesOf(header.compression);
    if (lines == 0) return {.reason = Reason::CannotOpen, .cause = Cause::UnknownPacking};
    Outcome assigned = AssignChannels(channels, header);
    if (!assigned.IsDone()) return assigned;

    const std::uint32_t width = header.data.Width(), height = header.data.Height();
    if (!header.tiled) {
        header.chunkWidth = width;
        header.chunkHeight = lines;
    }
    constexpr std::uint32_t kLargestTile = 1 << 16;
    if (header.chunkWidth == 0 || header.chunkHeight == 0) return failed;
    if (header.tiled && std::max(header.chunkWidth, header.chunkHeight) > kLargestTile) return failed;
    header.chunksAcross = (width - 1) / header.chunkWidth + 1;
    header.chunksDown = (height - 1) / header.chunkHeight + 1;
    // No chunk is larger than the picture.
    header.chunkHeight = std::min(header.chunkHeight, height);
    header.chunkWidth = std::min(header.chunkWidth, width);
    return Fits(header, fileSize) ? Outcome{} : failed;
}

}  // namespace skyvault
