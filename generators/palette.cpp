#include "generators/palette.h"

#include <cstdint>

#include "codecs/picture_files.h"
#include "generators/random.h"

namespace skyvault {

Outcome ReadPalette(const ImportRequest& request, Image& picture) {
    const std::wstring& path = request.Path();
    if (path.empty()) return Failure(Reason::PictureMissing);
    Outcome loaded = LoadPicture(path, picture);
    if (!loaded.IsDone()) loaded.reason = Reason::PictureMissing;
    return loaded;
}

bool DiagonalPalette(const Image& picture, Diagonal rule, std::span<Color8> colours) {
    if (!picture.IsValid()) return false;
    const bool toCorner = rule == Diagonal::ToCorner;
    const std::uint64_t across = std::uint64_t{picture.width} - (toCorner ? 1 : 0);
    const std::uint64_t down = std::uint64_t{picture.height} - (toCorner ? 1 : 0);
    const std::uint64_t parts = colours.size() - (toCorner ? 1 : 0);
    for (std::uint64_t k = 0; k < colours.size(); ++k) {
        colours[k] = picture.GetPixel8(static_cast<std::int32_t>(k * across / parts),
                                       static_cast<std::int32_t>(k * down / parts));
    }
    return true;
}

Color8 RandomPixel(const Image& picture) {
    const std::int32_t column = RandomInt(static_cast<std::int32_t>(picture.width));
    const std::int32_t row = RandomInt(static_cast<std::int32_t>(picture.height));
    return picture.GetPixel8(column, row);
}

}  // namespace skyvault
