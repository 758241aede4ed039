// DDS files as the program reads and writes them: a cube map, or a single picture.
//
// A cube map's array items are +X, −X, +Y, −Y, +Z, −Z: the faces right, left, top, bottom, front, back, none
// of them turned or mirrored.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "codecs/dds_container.h"
#include "codecs/picture_codec.h"
#include "image/image.h"
#include "platform/outcome.h"

namespace skyvault {

enum class DdsKind {
    Unusable,  ///< no readable header, no size, or an array of neither one nor six square pictures
    Picture,
    Volume,
    CubeMap,  ///< six square array items, whether or not the file calls itself a cube map
};

/// Looks at the header only.
DdsKind GetDdsKind(const std::wstring& path);

/// Reads the six faces in the order front, right, back, left, top, bottom. An item that cannot be read leaves
/// its face as it was; a failure, for lack of memory for one too, leaves all of them. Without keepAlpha every
/// pixel is composited over opaque black.
Outcome LoadDdsCubeMap(const std::wstring& path, std::array<Image, 6>& faces, bool keepAlpha);

/// Gives a mip level of the face of that number in the order front, right, back, left, top, bottom; level 0
/// is the face itself, each further one half as large.
using FaceSource = std::function<Outcome(std::uint32_t level, std::size_t face, Image& picture)>;

/// How a cube map is written.
struct CubeMapWriting {
    bool keepAlpha = false;                   ///< else every pixel is opaque
    bool compress = true;                     ///< 8-bit faces as BC1
    DdsFormat encoding = DdsFormat::Unknown;  ///< when given, this instead, whatever the faces are
    bool mips = false;                        ///< down to 1 × 1
};

/// Writes six faces of the front face's size: in its channel type, RGBA of 8 or 16 bits or halves, or as
/// `writing` says. The faces are asked for one after the other, level by level, so that only one is held
/// beside what the file holds; the first failure of the source ends the writing. The outcome describes the
/// file by CubeMapInfo. The file appears under its name only when whole.
Outcome SaveDdsCubeMap(const std::wstring& path, const FaceSource& faces, const CubeMapWriting& writing);

/// The DDS branches of ReadPictureFacts (of each face of a cube map, its memory for all), LoadPicture and
/// SavePicture (codecs/picture_files.h). Written: 8 bits as BC1, more uncompressed, in RGBA; alpha is kept
/// when `format` has it. path of the writer: a temporary name.
bool InspectDds(const std::wstring& path, PictureFacts& facts);
bool ReadDdsPicture(const std::wstring& path, Image& image);
bool WriteDdsPicture(const Image& image, const std::wstring& path, PixelFormat format);

}  // namespace skyvault
