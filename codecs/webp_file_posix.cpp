#include "codecs/webp_file_posix.h"

#include <webp/decode.h>

#include <array>

#include "codecs/picture_header.h"
#include "platform/memory_budget.h"

namespace skyvault {

bool WebpFile::IsAnimated() const {
    std::array<std::uint8_t, kPictureHeaderSize> start;
    WebPBitstreamFeatures features;
    const std::size_t count = file_.ReadSome(0, start.data(), start.size());
    return WebPGetFeatures(start.data(), count, &features) == VP8_STATUS_OK && features.has_animation != 0;
}

bool WebpFile::Select(std::uint32_t frame) {
    facts_ = {};
    const std::uint64_t size = file_.Size();
    if (frame != 0 || size > MemoryBudget()) return false;
    bytes_ = AllocateBytes(static_cast<std::size_t>(size));
    WebPBitstreamFeatures features;
    if (!bytes_ || !file_.Read(0, bytes_.get(), static_cast<std::size_t>(size)) ||
        WebPGetFeatures(reinterpret_cast<const std::uint8_t*>(bytes_.get()), static_cast<std::size_t>(size),
                        &features) != VP8_STATUS_OK ||
        features.has_animation != 0 || features.width < 1 || features.height < 1) {
        return false;
    }
    facts_.size = {static_cast<std::uint32_t>(features.width), static_cast<std::uint32_t>(features.height)};
    if (!PlausibleSize(facts_.size.width, facts_.size.height, size)) return false;
    facts_.format = features.has_alpha != 0 ? PixelFormat::Rgba8 : PixelFormat::Rgb8;
    // Beside the picture: one in the decoder's own colours, at most 32 bits, and its alpha.
    const std::uint64_t perPixel = BytesPerPixel(facts_.format) + 5;
    facts_.memory = perPixel * facts_.size.width * facts_.size.height + size;
    return true;
}

bool WebpFile::Read(Image& image) {
    Image decoded(facts_.size.width, facts_.size.height, facts_.format);
    if (!bytes_ || !decoded.IsValid()) return false;
    auto* const pixels = reinterpret_cast<std::uint8_t*>(decoded.pixels.get());
    const auto decode = facts_.format == PixelFormat::Rgba8 ? WebPDecodeBGRAInto : WebPDecodeBGRInto;
    if (!decode(reinterpret_cast<const std::uint8_t*>(bytes_.get()), static_cast<std::size_t>(file_.Size()),
                pixels, decoded.ByteCount(), static_cast<int>(decoded.stride))) {
        return false;
    }
    image = std::move(decoded);
    return true;
}

}  // namespace skyvault
