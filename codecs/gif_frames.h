// The blocks of a GIF file: how many frames there are and what the file says about one of them. Pixels are
// not looked at (gif_pixels.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace skyvault {

struct GifFrame {
    std::uint32_t delay = 0;  ///< hundredths of a second
    std::uint32_t disposal = 0;
    std::uint32_t left = 0, top = 0, width = 0, height = 0;
    bool coloured = false;  ///< there is a colour table for it, its own or the canvas's
    bool interlaced = false;
    int transparent = -1;  ///< which colour is; negative: none
    /// Where in the file its colours and its codes are.
    std::size_t coloursAt = 0, codesAt = 0;
    std::uint32_t colourCount = 0;
};

/// Number of frames up to the end mark or the first damage, and the asked one of them (0 is the first;
/// untouched when there are fewer). 0 when the bytes are not a GIF file.
std::uint32_t ReadGifFrames(std::span<const std::byte> file, std::uint32_t index, GifFrame& frame);

/// Whether the blocks lead to the end mark.
bool GifReachesItsEnd(std::span<const std::byte> file);

/// Whether every frame has colours. Some decoders do not check that.
bool GifFramesHaveColours(std::span<const std::byte> file);

}  // namespace skyvault
