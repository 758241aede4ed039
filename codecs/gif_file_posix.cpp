#include "codecs/gif_file_posix.h"

#include <array>
#include <cstring>

#include "codecs/gif_pixels.h"
#include "codecs/picture_header.h"
#include "platform/memory_budget.h"

namespace skyvault {

bool GifFile::Select(std::uint32_t number) {
    facts_ = {};
    const std::uint64_t size = file_.Size();
    if (size > MemoryBudget()) return false;
    bytes_ = AllocateBytes(static_cast<std::size_t>(size));
    if (!bytes_ || !file_.Read(0, bytes_.get(), static_cast<std::size_t>(size))) return false;
    facts_.frameCount = ReadGifFrames({bytes_.get(), static_cast<std::size_t>(size)}, number, frame_);
    if (number >= facts_.frameCount || !frame_.coloured || frame_.width == 0 || frame_.height == 0 ||
        !PlausibleSize(frame_.width, frame_.height, size)) {
        return false;
    }
    facts_.size = {frame_.width, frame_.height};
    facts_.format = PixelFormat::Rgba8;
    facts_.memory = std::uint64_t{4} * frame_.width * frame_.height + size;
    return true;
}

bool GifFile::Read(Image& image) {
    Image decoded(facts_.size.width, facts_.size.height, facts_.format);
    if (!bytes_ || !decoded.IsValid()) return false;
    if (!ReadGifPixels({bytes_.get(), static_cast<std::size_t>(file_.Size())}, frame_, decoded)) return false;
    decoded.frameCount = facts_.frameCount;
    if (facts_.frameCount > 1) {
        constexpr std::uint32_t kMissingDelay = 10;
        decoded.frameDelay = 10 * (frame_.delay != 0 ? frame_.delay : kMissingDelay);
        decoded.frameDisposal = frame_.disposal;
        decoded.frameLeft = frame_.left;
        decoded.frameTop = frame_.top;
        decoded.frameWidth = frame_.width;
        decoded.frameHeight = frame_.height;
    }
    image = std::move(decoded);
    return true;
}

}  // namespace skyvault
