#include "codecs/tiff_file_posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <tiffio.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "codecs/picture_header.h"
#include "codecs/tiff_directories.h"
#include "codecs/tiff_samples.h"
#include "image/pixel_rows.h"
#include "platform/memory_budget.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

/// What the library reads from, and what it had to say.
class Source {
  public:
    explicit Source(const std::wstring& path) {
        // Opening a pipe must not wait for its other end.
        descriptor_ = open(ToSystemBytes(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        struct stat status {};
        if (descriptor_ < 0 || fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) return;
        size_ = static_cast<std::uint64_t>(status.st_size);
    }
    explicit Source(std::span<const std::byte> file) : memory_(file), size_(file.size()) {}
    ~Source() {
        if (descriptor_ >= 0) close(descriptor_);
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    std::uint64_t Size() const { return size_; }

    /// As many of n bytes as there are.
    std::size_t ReadSome(std::uint64_t at, void* to, std::size_t n) const {
        if (at >= size_) return 0;
        n = static_cast<std::size_t>(std::min<std::uint64_t>(n, size_ - at));
        if (descriptor_ < 0) {
            std::memcpy(to, memory_.data() + at, n);
            return n;
        }
        std::size_t done = 0;
        while (done < n) {
            const ssize_t count =
                pread(descriptor_, static_cast<char*>(to) + done, n - done, static_cast<off_t>(at + done));
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) break;
            done += static_cast<std::size_t>(count);
        }
        return done;
    }

    std::uint64_t position = 0;
    int errors = 0, warnings = 0;

  private:
    std::span<const std::byte> memory_;
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
};

Source& SourceOf(thandle_t handle) {
    return *static_cast<Source*>(handle);
}

tmsize_t ReadSource(thandle_t handle, void* to, tmsize_t n) {
    Source& source = SourceOf(handle);
    const std::size_t count = n > 0 ? source.ReadSome(source.position, to, static_cast<std::size_t>(n)) : 0;
    source.position += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t WriteNothing(thandle_t, void*, tmsize_t) {
    return -1;
}

toff_t SeekSource(thandle_t handle, toff_t offset, int whence) {
    Source& source = SourceOf(handle);
    const std::uint64_t from = whence == SEEK_CUR ? source.position : whence == SEEK_END ? source.Size() : 0;
    return source.position = from + offset;
}

int KeepSource(thandle_t) {
    return 0;
}

toff_t SizeOfSource(thandle_t handle) {
    return SourceOf(handle).Size();
}

// Nothing is printed: messages are only counted.
int CountError(TIFF*, void* source, const char*, const char*, va_list) {
    ++static_cast<Source*>(source)->errors;
    return 1;
}

int CountWarning(TIFF*, void* source, const char*, const char*, va_list) {
    ++static_cast<Source*>(source)->warnings;
    return 1;
}

using Handle = std::unique_ptr<TIFF, void (*)(TIFF*)>;

/// Opened, but at none of its directories yet.
Handle OpenHandle(Source& source) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               TIFFOpenOptionsFree);
    if (!options) return {nullptr, TIFFClose};
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), CountError, &source);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), CountWarning, &source);
    // Whether the picture itself is too large is found out before it is decoded.
    constexpr std::uint64_t kAlways = std::uint64_t{64} << 20;
    const std::uint64_t most = std::clamp<std::uint64_t>(MemoryBudget(), kAlways, PTRDIFF_MAX);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(most));
    return {TIFFClientOpenExt("", "rhm", &source, ReadSource, WriteNothing, SeekSource, KeepSource,
                              SizeOfSource, nullptr, nullptr, options.get()),
            TIFFClose};
}

/// A tag's value, the tag's default where there is none.
template <typename Value>
Value Tag(TIFF* tiff, std::uint32_t tag, Value absent = {}) {
    Value value{};
    return TIFFGetFieldDefaulted(tiff, tag, &value) ? value : absent;
}

/// A directory as it matters here. A chunk is a tile, or a strip as wide as the picture.
struct Page {
    std::uint32_t width = 0, height = 0;
    std::uint16_t compression = 0;
    bool tiled = false;
    bool throughLibrary = false;  ///< its colours are the library's to convert
    std::uint32_t chunkWidth = 0, chunkHeight = 0;
    std::uint32_t across = 0, down = 0;  ///< chunks
    std::uint64_t rowBytes = 0;          ///< of a chunk's row, of one sample where they are separate
    TiffSamples samples;
};

bool ReadPalette(TIFF* tiff, TiffSamples& samples) {
    std::uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
    if (samples.bits > 16 || !TIFFGetField(tiff, TIFFTAG_COLORMAP, &red, &green, &blue)) return false;
    const std::size_t count = std::size_t{1} << samples.bits;
    const auto isSmall = [](std::uint16_t value) { return value < 256; };
    // Some writers store bytes where the format has 16 bits.
    const bool bytes = std::all_of(red, red + count, isSmall) && std::all_of(green, green + count, isSmall) &&
                       std::all_of(blue, blue + count, isSmall);
    const int shift = bytes ? 0 : 8;
    samples.palette.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples.palette[i] = {static_cast<std::uint8_t>(red[i] >> shift),
                              static_cast<std::uint8_t>(green[i] >> shift),
                              static_cast<std::uint8_t>(blue[i] >> shift)};
    }
    return true;
}

/// alphaByHabit: the file does not tell what samples beyond the colours are.
void FindAlpha(TIFF* tiff, bool alphaByHabit, TiffSamples& samples) {
    const std::uint32_t colours = ColourSamples(samples.colours);
    if (alphaByHabit) {
        if (samples.colours == TiffColours::Rgb && samples.samples == 4) samples.alpha = colours;
        return;
    }
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    if (!TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds)) return;
    for (std::uint32_t i = 0; i < count && colours + i < samples.samples; ++i) {
        if (kinds[i] != EXTRASAMPLE_ASSOCALPHA && kinds[i] != EXTRASAMPLE_UNASSALPHA) continue;
        samples.alpha = colours + i;
        // The colours of a palette are nobody's to multiply.
        samples.multiplied = kinds[i] == EXTRASAMPLE_ASSOCALPHA && samples.colours != TiffColours::Palette;
        return;
    }
}

/// What the samples mean; false where nobody could tell.
bool ReadSamples(TIFF* tiff, bool alphaByHabit, Page& page) {
    TiffSamples& samples = page.samples;
    samples.bits = Tag<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    samples.samples = Tag<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    samples.separate =
        samples.samples > 1 &&
        Tag<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
    switch (Tag<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT)) {
        case SAMPLEFORMAT_UINT:
        case SAMPLEFORMAT_VOID:
            samples.numbers = TiffNumbers::Unsigned;
            break;
        case SAMPLEFORMAT_INT:
            samples.numbers = TiffNumbers::Signed;
            break;
        case SAMPLEFORMAT_IEEEFP:
            samples.numbers = TiffNumbers::Float;
            break;
        default:
            return false;
    }
    std::uint16_t photometric = 0;
    if (!TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric)) {
        photometric = samples.samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
    }
    switch (photometric) {
        case PHOTOMETRIC_MINISWHITE:
            samples.colours = TiffColours::GreyInverted;
            break;
        case PHOTOMETRIC_MINISBLACK:
            samples.colours = TiffColours::Grey;
            break;
        case PHOTOMETRIC_RGB:
            samples.colours = TiffColours::Rgb;
            break;
        case PHOTOMETRIC_PALETTE:
            samples.colours = TiffColours::Palette;
            if (!ReadPalette(tiff, samples)) return false;
            break;
        case PHOTOMETRIC_SEPARATED:
            if (Tag<std::uint16_t>(tiff, TIFFTAG_INKSET, INKSET_CMYK) != INKSET_CMYK) return false;
            samples.colours = TiffColours::Cmyk;
            break;
        case PHOTOMETRIC_YCBCR:
        case PHOTOMETRIC_CIELAB:
        case PHOTOMETRIC_LOGL:
        case PHOTOMETRIC_LOGLUV: {
            char reason[1024];
            page.throughLibrary = true;
            return TIFFRGBAImageOK(tiff, reason) != 0;
        }
        default:
            return false;
    }
    FindAlpha(tiff, alphaByHabit, samples);
    return CanConvert(samples);
}

bool ReadChunks(TIFF* tiff, Page& page) {
    page.tiled = TIFFIsTiled(tiff) != 0;
    if (page.tiled) {
        page.chunkWidth = Tag<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH);
        page.chunkHeight = Tag<std::uint32_t>(tiff, TIFFTAG_TILELENGTH);
        page.rowBytes = TIFFTileRowSize64(tiff);
    } else {
        page.chunkWidth = page.width;
        page.chunkHeight = std::min(Tag<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, page.height), page.height);
        page.rowBytes = TIFFScanlineSize64(tiff);
    }
    if (page.chunkWidth == 0 || page.chunkHeight == 0 || page.rowBytes == 0) return false;
    page.across = (page.width - 1) / page.chunkWidth + 1;
    page.down = (page.height - 1) / page.chunkHeight + 1;
    return true;
}

/// How many bytes a chunk has at least whose rows are unpacked to so many: the most each compression can do.
/// 0: for none known here; nothing is said of those that no flat picture can be too small for.
std::uint64_t LeastBytes(const Page& page, std::uint32_t rows) {
    const std::uint64_t bytes = page.rowBytes * rows;
    switch (page.compression) {
        case COMPRESSION_NONE:
            return bytes;
        case COMPRESSION_PACKBITS:
            return bytes / 64;  // 128 bytes in 2
        case COMPRESSION_SGILOG:
        case COMPRESSION_SGILOG24:
            return page.compression == COMPRESSION_SGILOG ? bytes / 4 / 65
                                                          : 0;  // runs of up to 129 in 2 bytes
        case COMPRESSION_LZW:
            return bytes / 2560;  // the longest string of a full table, 3838 bytes, in a code of 12 bits
        case COMPRESSION_DEFLATE:
        case COMPRESSION_ADOBE_DEFLATE:
            return bytes / 1032;  // 258 bytes in 2 bits
        case COMPRESSION_PIXARLOG:
            return bytes / 4 / 1032;  // the same, one number of it as up to four bytes
        case COMPRESSION_ZSTD:
            return bytes / 32768;  // a block of 128 KB in 4 bytes
        case COMPRESSION_LZMA:
            return bytes / 8192;  // 273 bytes in some 14 bits of 0.022 bits each
        case COMPRESSION_JPEG:
            // A bit for each block of 8 × 8, and of one component all blocks are there.
            return std::uint64_t{page.chunkWidth / 8} * (rows / 8) / 8;
        case COMPRESSION_CCITTRLE:
        case COMPRESSION_CCITTRLEW:
        case COMPRESSION_CCITTFAX3:
        case COMPRESSION_CCITTFAX4:
            return rows / 8;  // a bit says that a row is like the one before
        default:
            return 0;
    }
}

bool KnowsCompression(std::uint16_t compression) {
    constexpr std::uint16_t kKnown[] = {
        COMPRESSION_NONE,     COMPRESSION_PACKBITS,      COMPRESSION_LZW,       COMPRESSION_DEFLATE,
        COMPRESSION_ZSTD,     COMPRESSION_ADOBE_DEFLATE, COMPRESSION_LZMA,      COMPRESSION_JPEG,
        COMPRESSION_CCITTRLE, COMPRESSION_CCITTRLEW,     COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4,
        COMPRESSION_SGILOG,   COMPRESSION_SGILOG24,      COMPRESSION_PIXARLOG,  COMPRESSION_WEBP};
    return std::find(std::begin(kKnown), std::end(kKnown), compression) != std::end(kKnown) &&
           TIFFIsCODECConfigured(compression);
}

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

/// A chunk's place in the picture, the part of it that is inside.
struct Place {
    std::uint32_t x, y, width, height;
};

Place PlaceOf(const Page& page, std::uint32_t column, std::uint32_t row) {
    const std::uint32_t x = column * page.chunkWidth, y = row * page.chunkHeight;
    return {x, y, std::min(page.chunkWidth, page.width - x), std::min(page.chunkHeight, page.height - y)};
}

/// The samples that are read of a pixel.
std::vector<std::uint32_t> WantedSamples(const TiffSamples& samples) {
    std::vector<std::uint32_t> wanted;
    for (std::uint32_t i = 0; i < ColourSamples(samples.colours); ++i) wanted.push_back(i);
    if (samples.alpha != 0) wanted.push_back(samples.alpha);
    return wanted;
}

/// Memory that never shows what was in it before.
ByteBuffer ClearBytes(std::uint64_t count) {
    ByteBuffer buffer = AllocateBytes(static_cast<std::size_t>(count));
    if (buffer) std::memset(buffer.get(), 0, static_cast<std::size_t>(count));
    return buffer;
}

/// Unpacks a deflated part of the file to its end without keeping anything: how many bytes it makes, 0 when
/// it is damaged. The library takes what unpacks to too much for good, and leaves memory that it never wrote.
std::uint64_t InflatedBytes(const Source& source, std::uint64_t at, std::uint64_t count) {
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
    PageReader(const Source& source, TIFF* tiff, const Page& page, Image& image)
        : source_(source), tiff_(tiff), page_(page), image_(image) {}

    bool Read() {
        if (page_.throughLibrary) return ReadThroughLibrary();
        if (page_.tiled || page_.samples.separate) return ReadChunksOfSamples();
        return IsPictureRow(page_.samples) && page_.rowBytes == image_.stride ? ReadRowsInPlace() : ReadRow();
    }

  private:
    std::byte* PixelAt(const Place& place, std::uint32_t row) {
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
        return ForChunks([&](const Place& place, std::uint32_t strip) {
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
        return ForChunks([&](const Place& place, std::uint32_t chunk) {
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
        return ForChunks([&](const Place& place, std::uint32_t chunk) {
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

    const Source& source_;
    TIFF* tiff_;
    const Page& page_;
    Image& image_;
};

}  // namespace

struct TiffFile::State {
    template <typename From>
    explicit State(const From& from) : source(from) {
        std::byte start[kPictureHeaderSize];
        const std::size_t count = source.ReadSome(0, start, sizeof start);
        isTiff = ReadPictureHeader({start, count}).kind == PictureKind::Tiff;
        if (isTiff) directories = FindTiffDirectories(readAt);
    }

    bool ReadPage(std::uint64_t directory);
    bool CheckChunks(std::uint64_t& largest) const;
    void Describe(std::uint64_t largestChunk);

    Source source;
    const ReadFileAt readAt = [this](std::uint64_t at, void* to, std::size_t n) {
        return source.ReadSome(at, to, n) == n;
    };
    bool isTiff = false;
    std::vector<std::uint64_t> directories;
    Handle handle{nullptr, TIFFClose};
    Page page;
    PictureFacts facts;
};

bool TiffFile::State::ReadPage(std::uint64_t directory) {
    constexpr std::uint32_t kExtraSamples = 338;
    TIFF* const tiff = handle.get();
    if (!TIFFSetSubDirectory(tiff, directory)) return false;
    page.width = Tag<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH);
    page.height = Tag<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH);
    page.compression = Tag<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (!IsReadableSize(page.width, page.height) || Tag<std::uint32_t>(tiff, TIFFTAG_IMAGEDEPTH, 1) != 1 ||
        !KnowsCompression(page.compression)) {
        return false;
    }
    // Pixels are taken as they are stored; the library would turn those that it converts.
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    return ReadSamples(tiff, !TiffDirectoryHas(readAt, directory, kExtraSamples), page) &&
           ReadChunks(tiff, page);
}

/// Whether every chunk lies in the file and can hold what it unpacks to; how large the largest is.
bool TiffFile::State::CheckChunks(std::uint64_t& largest) const {
    TIFF* const tiff = handle.get();
    const std::uint64_t samples = page.samples.separate ? page.samples.samples : 1;
    const std::uint64_t perSample = std::uint64_t{page.across} * page.down, count = perSample * samples;
    if (count != (page.tiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff))) return false;
    std::uint64_t all = 0;
    largest = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        const auto row = static_cast<std::uint32_t>(i % perSample / page.across);
        const std::uint32_t rows = page.tiled ? page.chunkHeight : PlaceOf(page, 0, row).height;
        int failed = 0, failedToo = 0;
        const std::uint64_t at = TIFFGetStrileOffsetWithErr(tiff, static_cast<std::uint32_t>(i), &failed);
        const std::uint64_t bytes =
            TIFFGetStrileByteCountWithErr(tiff, static_cast<std::uint32_t>(i), &failedToo);
        if (failed || failedToo || bytes == 0 || at > source.Size() || bytes > source.Size() - at ||
            bytes < LeastBytes(page, rows)) {
            return false;
        }
        largest = std::max(largest, bytes);
        all += bytes;
        // Chunks that share their bytes would be a larger picture than the file can hold.
        if (all > source.Size()) return false;
    }
    return true;
}

void TiffFile::State::Describe(std::uint64_t largestChunk) {
    facts.size = {page.width, page.height};
    facts.format = page.throughLibrary ? PixelFormat::Rgba8 : PictureFormat(page.samples);
    facts.frameCount = static_cast<std::uint32_t>(directories.size());
    const std::uint64_t pixels = std::uint64_t{page.width} * page.height;
    const std::uint64_t chunkPixels = std::uint64_t{page.chunkWidth} * page.chunkHeight;
    const std::uint64_t chunkBytes = page.rowBytes * page.chunkHeight;
    facts.memory = pixels * BytesPerPixel(facts.format) + largestChunk;
    if (page.throughLibrary) {
        facts.memory += chunkPixels * 4 + chunkBytes * (page.samples.separate ? page.samples.samples : 1);
    } else if (page.samples.separate) {
        facts.memory += chunkBytes * WantedSamples(page.samples).size();
    } else if (page.tiled) {
        facts.memory += chunkBytes;
    }
    // The coefficients of progressive ones.
    if (page.compression == COMPRESSION_JPEG) facts.memory += chunkPixels * 2 * page.samples.samples;
}

TiffFile::TiffFile(const std::wstring& path) : state_(std::make_unique<State>(path)) {}
TiffFile::TiffFile(std::span<const std::byte> file) : state_(std::make_unique<State>(file)) {}
TiffFile::~TiffFile() = default;

bool TiffFile::IsTiff() const {
    return state_->isTiff;
}

bool TiffFile::Select(std::uint32_t page) {
    State& state = *state_;
    state.handle.reset();
    state.page = Page();
    state.source.position = 0;
    state.source.errors = 0;
    if (page >= state.directories.size()) return false;
    state.handle = OpenHandle(state.source);
    std::uint64_t largestChunk = 0;
    const bool sound = state.handle && state.ReadPage(state.directories[page]) &&
                       state.CheckChunks(largestChunk) && state.source.errors == 0;
    if (!sound) {
        state.handle.reset();
        return false;
    }
    state.Describe(largestChunk);
    return true;
}

const PictureFacts& TiffFile::Facts() const {
    return state_->facts;
}

bool TiffFile::Read(Image& image) {
    State& state = *state_;
    if (!state.handle) return false;
    const PictureFacts& facts = state.facts;
    Image decoded(facts.size.width, facts.size.height, facts.format);
    if (!decoded.IsValid()) return false;
    state.source.warnings = 0;
    if (!PageReader(state.source, state.handle.get(), state.page, decoded).Read() || state.source.errors != 0)
        return false;
    if (WarnsOfDamage(state.page.compression) && state.source.warnings != 0) return false;
    decoded.frameCount = facts.frameCount;
    if (facts.frameCount > 1) decoded.frameDelay = 100;  // as of animations that tell none
    image = std::move(decoded);
    return true;
}

}  // namespace skyvault
