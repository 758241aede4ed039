#include "codecs/tiff_page_posix.h"

#include <algorithm>
#include <iterator>

#include "codecs/picture_header.h"

namespace skyvault {
namespace {

/// A tag's value, the tag's default where there is none.
template <typename Value>
Value Tag(TIFF* tiff, std::uint32_t tag, Value absent = {}) {
    Value value{};
    return TIFFGetFieldDefaulted(tiff, tag, &value) ? value : absent;
}

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
bool ReadSamples(TIFF* tiff, bool alphaByHabit, TiffPage& page) {
    TiffSamples& samples = page.samples;
    samples.bits = Tag<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    samples.samples = Tag<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    // No picture has more channels; of a file that claims thousands every pixel would cost thousands of
    // steps.
    constexpr std::uint32_t kMostSamples = 64;
    if (samples.samples > kMostSamples) return false;
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

bool ReadChunks(TIFF* tiff, TiffPage& page) {
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
std::uint64_t LeastBytes(const TiffPage& page, std::uint32_t rows) {
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

}  // namespace

TiffPlace PlaceOf(const TiffPage& page, std::uint32_t column, std::uint32_t row) {
    const std::uint32_t x = column * page.chunkWidth, y = row * page.chunkHeight;
    return {x, y, std::min(page.chunkWidth, page.width - x), std::min(page.chunkHeight, page.height - y)};
}

std::vector<std::uint32_t> WantedSamples(const TiffSamples& samples) {
    std::vector<std::uint32_t> wanted;
    for (std::uint32_t i = 0; i < ColourSamples(samples.colours); ++i) wanted.push_back(i);
    if (samples.alpha != 0) wanted.push_back(samples.alpha);
    return wanted;
}

bool ReadTiffPage(TIFF* tiff, bool alphaByHabit, TiffPage& page) {
    page.width = Tag<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH);
    page.height = Tag<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH);
    page.compression = Tag<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (!IsReadableSize(page.width, page.height) || Tag<std::uint32_t>(tiff, TIFFTAG_IMAGEDEPTH, 1) != 1 ||
        !KnowsCompression(page.compression)) {
        return false;
    }
    // Pixels are taken as they are stored; the library would turn those that it converts.
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    return ReadSamples(tiff, alphaByHabit, page) && ReadChunks(tiff, page);
}

bool CheckTiffChunks(const TiffSource& source, TIFF* tiff, const TiffPage& page, std::uint64_t& largest) {
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

PictureFacts FactsOf(const TiffPage& page, std::uint64_t largestChunk) {
    PictureFacts facts;
    facts.size = {page.width, page.height};
    facts.format = page.throughLibrary ? PixelFormat::Rgba8 : PictureFormat(page.samples);
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
    return facts;
}

}  // namespace skyvault
