// What the program and its module of OpenImageIO say to each other.
//
// OpenImageIO brings some 260 shared libraries, whose loading takes longer than converting a large picture.
// So the program is not linked with it: skyvault-oiio.so is, lies beside the program and is loaded for the
// first picture that needs it. Only plain numbers, names and memory pass between the two, and no exception
// does; the module uses none of the program's code.
#pragma once

#include <cstdint>

namespace skyvault {

/// How a file stores a channel, or how it is to be read.
enum class OiioChannel : std::uint32_t { Byte, Word, Half, Float, Other };

/// The frame an input is set to.
struct OiioFacts {
    int width, height, depth, channels;
    int alphaChannel;  ///< negative: none
    OiioChannel stored;
    bool alphaUnassociated;  ///< colours are not multiplied by alpha
};

/// Kinds of files have OpenImageIO's names ("gif", "heif" …), paths are UTF-8. Functions that return a
/// pointer return null on failure.
struct OiioFunctions {
    std::uint32_t version;  ///< kOiioVersion; a module of another build is refused

    /// An input stands at frame 0 once open.
    void* (*openInput)(const char* path, const char* kind);
    bool (*selectFrame)(void* input, int frame);
    bool (*describe)(void* input, OiioFacts* facts);
    /// All rows of the frame, the first `channels` of each pixel, red first.
    bool (*readPixels)(void* input, int channels, OiioChannel as, void* pixels);
    void (*closeInput)(void* input);

    /// Options are those the desktop's codecs have by default.
    void* (*openOutput)(const char* path, const char* kind, int width, int height, int channels,
                        OiioChannel type);
    /// Rows firstRow .. endRow − 1, to be given in order.
    bool (*writeRows)(void* output, int firstRow, int endRow, const void* pixels);
    /// Frees the output in any case; false when anything written to it failed.
    bool (*closeOutput)(void* output);
};

inline constexpr std::uint32_t kOiioVersion = 4;

/// The one symbol of the module: `const OiioFunctions* skyvaultOiio()`.
inline constexpr const char* kOiioSymbol = "skyvaultOiio";
using OiioEntry = const OiioFunctions* (*)();

}  // namespace skyvault
