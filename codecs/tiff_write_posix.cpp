#include "codecs/tiff_write_posix.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <memory>

#include "codecs/written_rows.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

constexpr std::uint32_t kStripRows = 32;
// Offsets have 32 bits, and packed noise may be half as long again.
constexpr std::uint64_t kMostOfPlainTiff = 0xa0000000u;

struct Target {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file{nullptr, &std::fclose};
    int errors = 0;
};

std::FILE* FileOf(thandle_t handle) {
    return static_cast<Target*>(handle)->file.get();
}

tmsize_t ReadTarget(thandle_t handle, void* to, tmsize_t n) {
    return static_cast<tmsize_t>(std::fread(to, 1, static_cast<std::size_t>(n), FileOf(handle)));
}

tmsize_t WriteTarget(thandle_t handle, void* from, tmsize_t n) {
    return static_cast<tmsize_t>(std::fwrite(from, 1, static_cast<std::size_t>(n), FileOf(handle)));
}

toff_t SeekTarget(thandle_t handle, toff_t offset, int whence) {
    std::FILE* const file = FileOf(handle);
    if (fseeko(file, static_cast<off_t>(offset), whence) == 0) return static_cast<toff_t>(ftello(file));
    ++static_cast<Target*>(handle)->errors;
    return static_cast<toff_t>(-1);
}

int KeepTarget(thandle_t) {
    return 0;
}

toff_t SizeOfTarget(thandle_t handle) {
    return SeekTarget(handle, 0, SEEK_END);
}

// Nothing is printed.
int CountError(TIFF*, void* target, const char*, const char*, va_list) {
    ++static_cast<Target*>(target)->errors;
    return 1;
}

int IgnoreWarning(TIFF*, void*, const char*, const char*, va_list) {
    return 1;
}

TIFF* Open(Target& target, bool large) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               TIFFOpenOptionsFree);
    if (!options) return nullptr;
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), CountError, &target);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), IgnoreWarning, nullptr);
    return TIFFClientOpenExt("", large ? "w8" : "w", &target, ReadTarget, WriteTarget, SeekTarget, KeepTarget,
                             SizeOfTarget, nullptr, nullptr, options.get());
}

bool SetTags(TIFF* tiff, const Image& image, PixelFormat format) {
    const bool half = ChannelType(format) == ChannelKind::Half;
    const std::uint32_t bits = ChannelType(format) == ChannelKind::Int8 ? 8 : 16;
    const std::uint32_t samples = BytesPerPixel(format) * 8 / bits;
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    return TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width) &&
           TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height) &&
           TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits) &&
           TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples) &&
           TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, half ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT) &&
           TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, samples == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB) &&
           TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) &&
           TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
           TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kStripRows) &&
           TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW) &&
           TIFFSetField(tiff, TIFFTAG_PREDICTOR, half ? PREDICTOR_FLOATINGPOINT : PREDICTOR_HORIZONTAL) &&
           (samples != 4 || TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha));
}

bool WriteStrips(TIFF* tiff, const Image& image, PixelFormat format) {
    // Files have red first.
    const bool swapped = ChannelType(format) == ChannelKind::Int8 && format != PixelFormat::Grey8;
    const bool asItIs = image.format == format && !swapped;
    const WrittenRows rows(image, format, format);
    Image strip(image.width, std::min(kStripRows, image.height), format);
    if (!rows.Ready() || !strip.IsValid()) return false;
    for (std::uint32_t y = 0; y < image.height; y += kStripRows) {
        const std::uint32_t count = std::min(kStripRows, image.height - y);
        for (std::uint32_t i = 0; !asItIs && i < count; ++i) {
            rows.Get(y + i, strip.Row(i));
            if (swapped) SwapRedAndBlueRow(format, strip.Row(i), image.width);
        }
        // The library copies what it takes the differences of.
        std::byte* const from = asItIs ? const_cast<std::byte*>(image.Row(y)) : strip.Row(0);
        const auto bytes = static_cast<tmsize_t>(std::size_t{strip.stride} * count);
        if (TIFFWriteEncodedStrip(tiff, y / kStripRows, from, bytes) != bytes) return false;
    }
    return true;
}

}  // namespace

bool WriteTiff(const Image& image, const std::wstring& path, PixelFormat format) {
    constexpr std::uint32_t kLongestEdge = 0x7fffffff;
    if (!image.IsValid() || image.width > kLongestEdge || image.height > kLongestEdge) return false;
    Target target;
    target.file.reset(std::fopen(ToSystemBytes(path).c_str(), "wb+"));
    if (!target.file) return false;
    const std::uint64_t bytes = std::uint64_t{BytesPerPixel(format)} * image.width * image.height;
    TIFF* const tiff = Open(target, bytes > kMostOfPlainTiff);
    if (!tiff) return false;
    const bool written = SetTags(tiff, image, format) && WriteStrips(tiff, image, format) && TIFFFlush(tiff);
    TIFFClose(tiff);
    // What is still to be written is written when the library goes elsewhere in the file, and that may fail,
    // too.
    const bool whole = written && target.errors == 0 && !std::ferror(target.file.get());
    return std::fclose(target.file.release()) == 0 && whole;
}

}  // namespace skyvault
