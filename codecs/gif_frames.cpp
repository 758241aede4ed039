#include "codecs/gif_frames.h"

#include <cstring>

namespace skyvault {
namespace {

constexpr std::uint32_t kHasColourTable = 0x80;

/// Walks the file from front to back; past its end everything reads as zero and AtEnd is true.
class Walk {
  public:
    explicit Walk(std::span<const std::byte> file) : file_(file) {}

    std::size_t Position() const { return at_; }
    bool AtEnd() const { return at_ >= file_.size(); }
    void Skip(std::size_t n) { at_ = n < file_.size() - at_ ? at_ + n : file_.size(); }
    std::uint32_t Byte() { return AtEnd() ? 0 : std::to_integer<std::uint32_t>(file_[at_++]); }
    std::uint32_t Word() {
        const std::uint32_t low = Byte();
        return low | Byte() << 8;
    }
    void SkipColourTable(std::uint32_t packed) {
        if (packed & kHasColourTable) Skip(std::size_t{3} << ((packed & 7) + 1));
    }
    /// A chain of blocks, each led by its size, up to the empty one.
    void SkipSubBlocks() {
        while (const std::uint32_t size = Byte()) Skip(size);
    }

  private:
    std::span<const std::byte> file_;
    std::size_t at_ = 0;
};

/// Calls visit(index, frame) for each frame and returns how many there are. ended: whether the end mark was
/// met.
template <typename Visit>
std::uint32_t WalkFrames(std::span<const std::byte> file, Visit visit, bool* ended = nullptr) {
    constexpr std::size_t kSignatureSize = 6;
    if (file.size() < kSignatureSize || (std::memcmp(file.data(), "GIF87a", kSignatureSize) != 0 &&
                                         std::memcmp(file.data(), "GIF89a", kSignatureSize) != 0)) {
        return 0;
    }
    Walk walk(file);
    walk.Skip(kSignatureSize + 4);  // and the canvas size
    const std::uint32_t canvasFlags = walk.Byte();
    walk.Skip(2);
    const std::size_t canvasColours = walk.Position();
    walk.SkipColourTable(canvasFlags);

    std::uint32_t count = 0;
    GifFrame next;
    while (!walk.AtEnd()) {
        constexpr std::uint32_t kExtension = 0x21, kGraphicControl = 0xf9, kImage = 0x2c, kEnd = 0x3b;
        const std::uint32_t block = walk.Byte();
        if (block == kExtension) {
            if (walk.Byte() == kGraphicControl) {
                const std::uint32_t size = walk.Byte();
                if (size == 0) continue;
                const std::uint32_t packed = walk.Byte();
                next.disposal = packed >> 2 & 7;
                next.delay = walk.Word();
                const int colour = size > 3 ? static_cast<int>(walk.Byte()) : -1;
                next.transparent = (packed & 1) != 0 ? colour : -1;
                walk.Skip(size > 4 ? size - 4 : 0);
            }
            walk.SkipSubBlocks();
        } else if (block == kImage) {
            next.left = walk.Word();
            next.top = walk.Word();
            next.width = walk.Word();
            next.height = walk.Word();
            const std::uint32_t flags = walk.Byte();
            if (walk.AtEnd()) break;
            const bool own = (flags & kHasColourTable) != 0;
            next.interlaced = (flags & 0x40) != 0;
            next.coloursAt = own ? walk.Position() : canvasColours;
            next.colourCount = 2u << ((own ? flags : canvasFlags) & 7);
            walk.SkipColourTable(flags);
            next.codesAt = walk.Position();
            walk.Skip(1);  // code size
            walk.SkipSubBlocks();
            next.coloured = ((flags | canvasFlags) & kHasColourTable) != 0;
            visit(count++, next);
            next = GifFrame{};
        } else {
            if (ended != nullptr) *ended = block == kEnd;
            break;
        }
    }
    return count;
}

}  // namespace

std::uint32_t ReadGifFrames(std::span<const std::byte> file, std::uint32_t index, GifFrame& frame) {
    return WalkFrames(file, [&](std::uint32_t i, const GifFrame& found) {
        if (i == index) frame = found;
    });
}

bool GifReachesItsEnd(std::span<const std::byte> file) {
    bool ended = false;
    WalkFrames(
        file, [](std::uint32_t, const GifFrame&) {}, &ended);
    return ended;
}

bool GifFramesHaveColours(std::span<const std::byte> file) {
    bool coloured = true;
    WalkFrames(file, [&](std::uint32_t, const GifFrame& found) { coloured = coloured && found.coloured; });
    return coloured;
}

}  // namespace skyvault
