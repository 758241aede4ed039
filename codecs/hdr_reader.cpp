#include "codecs/hdr_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

#include "codecs/picture_header.h"

namespace skyvault {
namespace {

constexpr int kExponentBias = 128 + 8;  // of a value = byte × 2^(exponent − bias)
struct Header {
    std::uint32_t width = 0, height = 0;
    bool columns = false;  ///< a scanline is a column of the picture
    bool upwards = false, leftwards = false;
    float exposure = 1;
    std::size_t size = 0;  ///< bytes up to the first scanline
};

/// The next line without its end; false when the text ends before the line does.
bool NextLine(std::string_view text, std::size_t& at, std::string_view& line) {
    const std::size_t end = text.find('\n', at);
    if (end == std::string_view::npos) return false;
    line = text.substr(at, end - at);
    at = end + 1;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return true;
}

std::string_view WithoutSpaces(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

template <typename Number>
bool ReadNumber(std::string_view text, Number& value) {
    text = WithoutSpaces(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

struct Axis {
    bool x = false, negative = false;
    std::uint32_t length = 0;
};

/// "-Y 512 " and the like, from the front of the text.
bool TakeAxis(std::string_view& text, Axis& axis) {
    text = WithoutSpaces(text);
    if (text.size() < 4 || (text[0] != '+' && text[0] != '-') || (text[1] != 'X' && text[1] != 'Y'))
        return false;
    axis.negative = text[0] == '-';
    axis.x = text[1] == 'X';
    text = WithoutSpaces(text.substr(2));
    const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
    const bool read = ReadNumber(text.substr(0, end), axis.length);
    text.remove_prefix(end);
    return read && axis.length > 0;
}

bool ReadResolution(std::string_view line, Header& header) {
    Axis first, second;
    if (!TakeAxis(line, first) || !TakeAxis(line, second) || !line.empty() || first.x == second.x)
        return false;
    header.columns = first.x;
    const Axis &x = first.x ? first : second, &y = first.x ? second : first;
    header.width = x.length;
    header.height = y.length;
    header.leftwards = x.negative;
    header.upwards = !y.negative;  // Y counts from the bottom
    return true;
}

Outcome ReadHeader(std::span<const std::byte> start, std::uint64_t fileSize, Header& header) {
    const std::string_view text(reinterpret_cast<const char*>(start.data()),
                                std::min(start.size(), kHdrHeaderLimit));
    Outcome failed = Failure(Reason::CannotOpen);
    if (!text.starts_with("#?")) return failed;
    std::string_view line;
    while (NextLine(text, header.size, line) && !line.empty()) {
        constexpr std::string_view kFormat = "FORMAT=", kExposure = "EXPOSURE=";
        if (line.starts_with(kFormat) && WithoutSpaces(line.substr(kFormat.size())) != "32-bit_rle_rgbe") {
            return {.reason = Reason::CannotOpen, .cause = Cause::ColoursNotRgb};
        }
        float exposure = 1;
        if (line.starts_with(kExposure)) {
            if (!ReadNumber(line.substr(kExposure.size()), exposure)) return failed;
            header.exposure *= exposure;
        }
    }
    if (!NextLine(text, header.size, line) || !ReadResolution(line, header)) return failed;
    // A scanline of channels with runs takes four bytes more than two for 127 pixels of a channel; others
    // take a pixel at least.
    const std::uint64_t scanlines = header.columns ? header.width : header.height;
    const bool sound = std::isnormal(header.exposure) && header.exposure > 0 &&
                       PlausibleSize(header.width, header.height, fileSize) &&
                       scanlines * 4 <= fileSize - header.size;
    return sound ? Outcome{} : failed;
}

/// The scanlines of a file, one after the other.
class Scanlines {
  public:
    explicit Scanlines(std::span<const std::byte> data) : data_(data) {}

    /// False when the data ends before, or a run goes beyond the scanline.
    bool Next(std::span<HdrPixel> line) {
        const auto width = static_cast<std::uint32_t>(line.size());
        if (data_.size() < 4) return false;
        const bool marked = data_[0] == std::byte{2} && data_[1] == std::byte{2} && data_[2] < std::byte{128};
        if (!HdrHasChannelRuns(width) || !marked) return NextOfPixels(line);
        const std::uint32_t told =
            std::to_integer<std::uint32_t>(data_[2]) << 8 | std::to_integer<std::uint32_t>(data_[3]);
        data_ = data_.subspan(4);
        if (told != width) return false;
        for (std::size_t channel = 0; channel < 4; ++channel) {
            if (!NextChannel(line, channel)) return false;
        }
        return true;
    }

  private:
    bool NextChannel(std::span<HdrPixel> line, std::size_t channel) {
        for (std::size_t x = 0; x < line.size();) {
            if (data_.empty()) return false;
            const std::size_t code = std::to_integer<std::size_t>(data_[0]);
            const bool run = code > 128;
            const std::size_t count = run ? code - 128 : code, bytes = run ? 1 : count;
            if (count == 0 || count > line.size() - x || data_.size() - 1 < bytes) return false;
            for (std::size_t i = 0; i < count; ++i) line[x + i][channel] = data_[run ? 1 : 1 + i];
            x += count;
            data_ = data_.subspan(1 + bytes);
        }
        return true;
    }

    bool NextOfPixels(std::span<HdrPixel> line) {
        constexpr std::byte kOne{1};
        int shift = 0;  // runs that follow each other are the bytes of one number, the lowest first
        for (std::size_t x = 0; x < line.size();) {
            if (data_.size() < 4) return false;
            const HdrPixel pixel = {data_[0], data_[1], data_[2], data_[3]};
            data_ = data_.subspan(4);
            if (pixel[0] != kOne || pixel[1] != kOne || pixel[2] != kOne) {
                line[x++] = pixel;
                shift = 0;
                continue;
            }
            const std::size_t count = std::to_integer<std::size_t>(pixel[3]) << shift;
            if (x == 0 || shift > 16 || count > line.size() - x) return false;
            std::fill_n(line.begin() + static_cast<std::ptrdiff_t>(x), count, line[x - 1]);
            x += count;
            shift += 8;
        }
        return true;
    }

    std::span<const std::byte> data_;
};

std::uint64_t ScanlineBytes(const Header& header) {
    return std::uint64_t{sizeof(HdrPixel)} * (header.columns ? header.height : header.width);
}

}  // namespace

Outcome InspectHdr(std::span<const std::byte> start, std::uint64_t fileSize, PictureFacts& facts) {
    Header header;
    Outcome read = ReadHeader(start, fileSize, header);
    if (!read.IsDone()) return read;
    facts.size = {header.width, header.height};
    facts.format = PixelFormat::RgbHalf;
    facts.frameCount = 1;
    facts.memory = std::uint64_t{BytesPerPixel(facts.format)} * header.width * header.height + fileSize +
                   ScanlineBytes(header);
    return {};
}

Outcome ReadHdr(std::span<const std::byte> file, Image& image, HalfLosses& losses) {
    image.Clear();
    Header header;
    Outcome read = ReadHeader(file, file.size(), header);
    if (!read.IsDone()) return read;
    Image picture(header.width, header.height, PixelFormat::RgbHalf);
    const ByteBuffer memory = AllocateBytes(static_cast<std::size_t>(ScanlineBytes(header)));
    if (!picture.IsValid() || !memory) return Failure(Reason::CannotOpen);

    constexpr float kFinite = 0x1p127f;  // 0 times it is 0
    std::array<float, 256> scales;
    for (int e = 0; e < 256; ++e) {
        scales[static_cast<std::size_t>(e)] =
            e == 0 ? 0.0f : std::min(std::ldexp(1.0f, e - kExponentBias) / header.exposure, kFinite);
    }
    const std::uint32_t count = header.columns ? header.height : header.width;
    const std::uint32_t scanlines = header.columns ? header.width : header.height;
    const std::span<HdrPixel> line(reinterpret_cast<HdrPixel*>(memory.get()), count);
    Scanlines source(file.subspan(header.size));
    for (std::uint32_t s = 0; s < scanlines; ++s) {
        if (!source.Next(line)) return Failure(Reason::CannotOpen);
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint32_t x = header.columns ? s : i, y = header.columns ? i : s;
            std::byte* const to = picture.Row(header.upwards ? header.height - 1 - y : y) +
                                  std::size_t{6} * (header.leftwards ? header.width - 1 - x : x);
            const float scale = scales[std::to_integer<std::size_t>(line[i][3])];
            for (std::size_t c = 0; c < 3; ++c) {
                const auto value = static_cast<float>(std::to_integer<int>(line[i][c]));
                const Half half = HoldInHalf(value * scale, losses);
                std::memcpy(to + 2 * c, &half, sizeof half);
            }
        }
    }
    picture.topDown = header.upwards ? 0 : 1;
    image = std::move(picture);
    return {};
}

}  // namespace skyvault
