#include "codecs/tiff_pixels_posix.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "image/pixel_rows.h"
#include "platform/memory.h"

namespace skyvault {
namespace {

/// Decoders that only warn of damage and go on with whatever they make of it.
bool WarnsOfDamage(std::uint16_t compression) {
    return compression == COMPRESSION_JPEG || compression == COMPRESSION_CCITTRLE ||
           compression == COMPRESSION_CCITTRLEW || compression == COMPRESSION_CCITTFAX3 ||
           compression == COMPRESSION_CCITTFAX4;
}

/// Decoders that fill all they were asked for, or fail.
bool FillsOrFails(std::uint16_t compression) {
    return compression == COMPRESSION_NONE || compression == COMPRESSION_LZW ||
           compression == COMPRESSION_PACKBITS || compression == COMPRESSION_ADOBE_DEFLATE ||
           compression == COMPRESSION_DEFLATE;
}

/// Memory that never shows what was in it before.
ByteBuffer ClearBytes(std::uint64_t count) {
    ByteBuffer buffer = AllocateBytes(static_cast<std::size_t>(count));
    if (buffer) std::memset(buffer.get(), 0, static_cast<std::size_t>(count));
    return buffer;
}

/// Unpacks a deflated part of the file to its end without keeping anything: how many bytes it makes, 0 when
/// it is damaged. The library takes what unpacks to too much for good, and leaves memory that it never wrote.
std::uint64_t InflatedBytes(const TiffSource& source, std::uint64_t at, std::uint64_t count) {
    constexpr std::size_t kPiece = 64 << 10;
    const ByteBuffer from = AllocateBytes(kPiece), to = AllocateBytes(kPiece);
    z_stream stream{};
    if (!from || !to || inflateInit(&stream) != Z_OK) return 0;
    int state = Z_OK;
    while (state == Z_OK) {
        if (stream.avail_in == 0) {
            const std::size_t got = source.ReadSome(
                at, from.get(), static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, count)));
            at += got;
            count -= got;
            stream.next_in = reinterpret_cast<Bytef*>(from.get());
            stream.avail_in = static_cast<uInt>(got);
        }
        stream.next_out = reinterpret_cast<Bytef*>(to.get());
        stream.avail_out = kPiece;
        state = inflate(&stream, Z_NO_FLUSH);  // an error, too, when nothing comes in any more
    }
    const std::uint64_t made = stream.total_out;
    inflateEnd(&stream);
    return state == Z_STREAM_END ? made : 0;
}

/// The pixels of a page, each way of storing them by its own function. All return false at the first failure.
class PageReader {
  public:
    PageReader(const TiffSource& source, TIFF* tiff, const TiffPage& page, Image& image)
        : source_(source), tiff_(tiff), page_(page), image_(image) {}

    bool Read() {
        if (page_.throughLibrary) return ReadThroughLibrary();
        if (page_.tiled || page_.samples.separate) return ReadChunksOfSamples();
        return IsPictureRow(page_.samples) && page_.rowBytes == image_.stride ? ReadRowsInPlace() : ReadRow();
    }

  private:
    std::byte* PixelAt(const TiffPlace& place, std::uint32_t row) {
        return image_.Row(place.y + row) + std::size_t{BytesPerPixel(image_.format)} * place.x;
    }

    /// Whether a chunk is undamaged, as far as the compression's own check tells. rows: those it has.
    bool IsSound(std::uint32_t chunk, std::uint32_t rows) {
        if (page_.compression != COMPRESSION_DEFLATE && page_.compression != COMPRESSION_ADOBE_DEFLATE) {
            return true;
        }
        const std::uint64_t made =
            InflatedBytes(source_, TIFFGetStrileOffset(tiff_, chunk), TIFFGetStrileByteCount(tiff_, chunk));
        const std::uint64_t wanted = page_.tiled ? TIFFTileSize64(tiff_) : TIFFVStripSize64(tiff_, rows);
        // Some writers fill the last strip up. Of the library's two decoders one stops short of its end.
        if (made > wanted) TIFFSetField(tiff_, TIFFTAG_DEFLATE_SUBCODEC, DEFLATE_SUBCODEC_ZLIB);
        return made >= wanted;
    }

    template <typename Function>
    bool ForChunks(Function function) {
        for (std::uint32_t row = 0; row < page_.down; ++row) {
            for (std::uint32_t column = 0; column < page_.across; ++column) {
                if (!function(PlaceOf(page_, column, row), row * page_.across + column)) return false;
            }
        }
        return true;
    }

    bool ReadRowsInPlace() {
        return ForChunks([&](const TiffPlace& place, std::uint32_t strip) {
            const std::size_t bytes = std::size_t{image_.stride} * place.height;
            std::byte* const rows = image_.Row(place.y);
            if (!FillsOrFails(page_.compression)) std::memset(rows, 0, bytes);
            const auto wanted = static_cast<tmsize_t>(bytes);
            if (!IsSound(strip, place.height) || TIFFReadEncodedStrip(tiff_, strip, rows, wanted) != wanted)
                return false;
            const bool blueFirst = ChannelType(image_.format) == ChannelKind::Int8;
            for (std::uint32_t y = 0; blueFirst && y < place.height; ++y) {
                SwapRedAndBlueRow(image_.format, image_.Row(place.y + y), image_.width);
            }
            return true;
        });
    }

    /// Row by row, as a strip may be the whole picture.
    bool ReadRow() {
        TiffRowConverter converter(page_.samples, page_.width);
        const ByteBuffer row = ClearBytes(page_.rowBytes);
        if (!row) return false;
        const std::byte* const rows[] = {row.get()};
        for (std::uint32_t y = 0; y < page_.height; ++y) {
            const std::uint32_t strip = y / page_.chunkHeight;
            if (y % page_.chunkHeight == 0 && !IsSound(strip, PlaceOf(page_, 0, strip).height)) return false;
            if (TIFFReadScanline(tiff_, row.get(), y, 0) != 1) return false;
            converter.Convert(rows, page_.width, image_.Row(y));
        }
        return true;
    }

    bool ReadChunksOfSamples() {
        const TiffSamples& samples = page_.samples;
        const std::uint64_t chunkBytes = page_.rowBytes * page_.chunkHeight;
        const std::vector<std::uint32_t> wanted =
            samples.separate ? WantedSamples(samples) : std::vector<std::uint32_t>{0};
        const ByteBuffer buffer = ClearBytes(chunkBytes * wanted.size());
        if (!buffer) return false;
        TiffRowConverter converter(samples, page_.chunkWidth);
        std::vector<const std::byte*> rows(samples.separate ? samples.samples : 1);
        return ForChunks([&](const TiffPlace& place, std::uint32_t chunk) {
            const std::uint32_t filled = page_.tiled ? page_.chunkHeight : place.height;
            const auto bytes = static_cast<tmsize_t>(page_.rowBytes * filled);
            for (std::size_t i = 0; i < wanted.size(); ++i) {
                const std::uint32_t number = chunk + wanted[i] * page_.across * page_.down;
                std::byte* const to = buffer.get() + chunkBytes * i;
                if (!FillsOrFails(page_.compression)) std::memset(to, 0, static_cast<std::size_t>(bytes));
                if (!IsSound(number, place.height)) return false;
                const tmsize_t count = page_.tiled ? TIFFReadEncodedTile(tiff_, number, to, bytes)
                                                   : TIFFReadEncodedStrip(tiff_, number, to, bytes);
                if (count != bytes) return false;
            }
            for (std::uint32_t y = 0; y < place.height; ++y) {
                for (std::size_t i = 0; i < wanted.size(); ++i) {
                    rows[wanted[i]] = buffer.get() + chunkBytes * i + page_.rowBytes * y;
                }
                converter.Convert(rows, place.width, PixelAt(place, y));
            }
            return true;
        });
    }

    bool ReadThroughLibrary() {
        const std::uint64_t pixels = std::uint64_t{page_.chunkWidth} * page_.chunkHeight;
        const ByteBuffer buffer = ClearBytes(pixels * 4);
        if (!buffer) return false;
        auto* const raster = reinterpret_cast<std::uint32_t*>(buffer.get());
        const std::uint32_t planes = page_.samples.separate ? page_.samples.samples : 1;
        return ForChunks([&](const TiffPlace& place, std::uint32_t chunk) {
            constexpr int kStopOnError = 1;
            for (std::uint32_t i = 0; i < planes; ++i) {
                if (!IsSound(chunk + i * page_.across * page_.down, place.height)) return false;
            }
            const int done = page_.tiled ? TIFFReadRGBATileExt(tiff_, place.x, place.y, raster, kStopOnError)
                                         : TIFFReadRGBAStripExt(tiff_, place.y, raster, kStopOnError);
            if (!done) return false;
            const std::uint32_t filled = page_.tiled ? page_.chunkHeight : place.height;
            for (std::uint32_t y = 0; y < place.height; ++y) {
                // Its rows come bottom first.
                const std::uint32_t* from = raster + std::size_t{page_.chunkWidth} * (filled - 1 - y);
                std::byte* to = PixelAt(place, y);
                for (std::uint32_t x = 0; x < place.width; ++x, to += 4) {
                    to[0] = static_cast<std::byte>(TIFFGetB(from[x]));
                    to[1] = static_cast<std::byte>(TIFFGetG(from[x]));
                    to[2] = static_cast<std::byte>(TIFFGetR(from[x]));
                    to[3] = std::byte{255};
                }
            }
            return true;
        });
    }

    const TiffSource& source_;
    TIFF* tiff_;
    const TiffPage& page_;
    Image& image_;
};

}  // namespace

bool ReadTiffPixels(TiffSource& source, TIFF* tiff, const TiffPage& page, Image& image) {
    source.warnings = 0;
    return PageReader(source, tiff, page, image).Read() && source.errors == 0 &&
           !(WarnsOfDamage(page.compression) && source.warnings != 0);
}

}  // namespace skyvault
