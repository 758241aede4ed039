// Encoding through OpenImageIO: HEIF, with the options the desktop's codec has by default.

#include <algorithm>
#include <cstring>
#include <string>

#include "codecs/oiio_codec_posix.h"
#include "codecs/written_rows.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

constexpr std::size_t kStripBytes = 1 << 20;
constexpr PixelFormat kStored = PixelFormat::Rgb8;

bool WriteRows(const OiioFunctions& oiio, void* output, const WrittenRows& rows, std::uint32_t width,
               std::uint32_t height) {
    const std::size_t rowBytes = std::size_t{BytesPerPixel(kStored)} * width;
    const auto stripRows =
        static_cast<std::uint32_t>(std::clamp<std::size_t>(kStripBytes / rowBytes, 1, height));
    // The writer reads up to some hundred bytes beyond each row.
    const std::uint32_t spareRows = 1 + static_cast<std::uint32_t>(1024 / rowBytes);
    Image strip(width, stripRows + spareRows, kStored);
    if (!strip.IsValid()) return false;
    std::memset(strip.pixels.get(), 0, strip.ByteCount());
    for (std::uint32_t y = 0; y < height; y += stripRows) {
        const std::uint32_t count = std::min(stripRows, height - y);
        for (std::uint32_t row = 0; row < count; ++row) rows.Get(y + row, strip.Row(row));
        strip.SwapRedAndBlue();  // files have red first
        if (!oiio.writeRows(output, static_cast<int>(y), static_cast<int>(y + count), strip.pixels.get())) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool EncodeHeifWithOiio(const Image& image, const std::wstring& path, PixelFormat wanted) {
    constexpr std::uint32_t kLongestEdge = 16384;
    if (!image.IsValid() || image.width > kLongestEdge || image.height > kLongestEdge) return false;
    const WrittenRows rows(image, wanted, kStored);
    const OiioFunctions* const oiio = rows.Ready() ? Oiio() : nullptr;
    if (!oiio) return false;
    const std::string name = ToSystemBytes(path);
    void* const output = oiio->openOutput(name.c_str(), "heif", static_cast<int>(image.width),
                                          static_cast<int>(image.height), 3, OiioChannel::Byte);
    if (!output) return false;
    const bool written = WriteRows(*oiio, output, rows, image.width, image.height);
    return oiio->closeOutput(output) && written;
}

}  // namespace skyvault
