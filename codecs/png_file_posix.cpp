#include "codecs/png_file_posix.h"

#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "codecs/picture_header.h"
#include "codecs/written_rows.h"
#include "image/pixel_rows.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

constexpr std::size_t kPieceBytes = 64 << 10;

/// Nothing is printed; an error leaves for the place that the buffer was set at. Between it and the library
/// no object has a destructor.
[[noreturn]] void Leave(png_structp png, png_const_charp) {
    std::longjmp(*static_cast<std::jmp_buf*>(png_get_error_ptr(png)), 1);
}

/// What a file tells beside its pixels may be damaged; transparency, or what may have been it, is of the
/// pixels. The message of a wrong checksum begins with the chunk's name.
void Warn(png_structp png, png_const_charp message) {
    static constexpr std::string_view kAside[] = {"eXIf", "iCCP", "iTXt", "tEXt", "zTXt", "pHYs", "tIME",
                                                  "gAMA", "cHRM", "sRGB", "bKGD", "sBIT", "oFFs"};
    const std::string_view text(message);
    const bool aside = std::find(std::begin(kAside), std::end(kAside), text.substr(0, 4)) != std::end(kAside);
    if (text.ends_with("CRC error") && !aside) Leave(png, message);
}

bool IsWide(PixelFormat format) {
    return ChannelType(format) != ChannelKind::Int8;
}

bool IsGrey(PixelFormat format) {
    return format == PixelFormat::Grey8 || format == PixelFormat::Grey16 || format == PixelFormat::GreyHalf;
}

/// What the pixels become. What no format of ours stores is 32-bit colour.
PixelFormat FormatOf(png_structp png, png_infop info) {
    using enum PixelFormat;
    const int bits = png_get_bit_depth(png, info), colours = png_get_color_type(png, info);
    if (bits < 8 || colours == PNG_COLOR_TYPE_PALETTE) return Rgba8;
    if ((colours & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png, info, PNG_INFO_tRNS)) {
        return bits == 8 ? Rgba8 : Rgba16;
    }
    if ((colours & PNG_COLOR_MASK_COLOR) != 0) return bits == 8 ? Rgb8 : Rgb16;
    return bits == 8 ? Grey8 : Grey16;
}

}  // namespace

struct PngFile::Reader {
    const FileSource& file;
    std::uint64_t position = 0;  // behind the piece
    std::size_t pieceSize = 0, pieceRead = 0;
    std::array<std::byte, kPieceBytes> piece;
    std::jmp_buf leave;
    png_structp png = nullptr;
    png_infop info = nullptr;

    explicit Reader(const FileSource& source) : file(source) {}
    ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /// For the library: all of n bytes.
    static void Next(png_structp png, png_bytep to, std::size_t n) {
        Reader& reader = *static_cast<Reader*>(png_get_io_ptr(png));
        while (n > 0) {
            if (reader.pieceRead == reader.pieceSize) {
                reader.pieceSize = reader.file.ReadSome(reader.position, reader.piece.data(), kPieceBytes);
                reader.position += reader.pieceSize;
                reader.pieceRead = 0;
                if (reader.pieceSize == 0) png_error(png, "the end of the file");
            }
            const std::size_t count = std::min(n, reader.pieceSize - reader.pieceRead);
            std::memcpy(to, &reader.piece[reader.pieceRead], count);
            reader.pieceRead += count;
            to += count;
            n -= count;
        }
    }

    bool Open() {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &leave, Leave, Warn);
        info = png ? png_create_info_struct(png) : nullptr;
        if (!info || setjmp(leave) != 0) return false;
        png_set_read_fn(png, this, Next);
        png_set_crc_action(png, PNG_CRC_ERROR_QUIT, PNG_CRC_WARN_DISCARD);
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        png_read_info(png, info);
        return true;
    }

    /// Everything that may leave.
    void ReadRows(Image& image) {
        const int colours = png_get_color_type(png, info);
        png_set_expand(png);
        if (IsWide(image.format)) png_set_swap(png);
        if (!IsGrey(image.format)) {
            if ((colours & PNG_COLOR_MASK_COLOR) == 0) png_set_gray_to_rgb(png);
            if (HasAlpha(image.format) && (colours & PNG_COLOR_MASK_ALPHA) == 0 &&
                !png_get_valid(png, info, PNG_INFO_tRNS)) {
                png_set_add_alpha(png, IsWide(image.format) ? 0xffff : 0xff, PNG_FILLER_AFTER);
            }
            if (!IsWide(image.format)) png_set_bgr(png);
        }
        const int passes = png_set_interlace_handling(png);
        png_read_update_info(png, info);
        if (png_get_rowbytes(png, info) != image.stride) png_error(png, "rows of another size");
        for (int pass = 0; pass < passes; ++pass) {
            for (std::uint32_t y = 0; y < image.height; ++y) {
                png_read_row(png, reinterpret_cast<png_bytep>(image.Row(y)), nullptr);
            }
        }
    }

    bool Read(Image& image) {
        if (setjmp(leave) != 0) return false;
        ReadRows(image);
        return true;
    }
};

PngFile::PngFile(const FileSource& file) : file_(file) {}
PngFile::~PngFile() = default;

bool PngFile::Select(std::uint32_t frame) {
    facts_ = {};
    reader_.reset();
    std::array<std::byte, kPictureHeaderSize> start;
    const PictureHeader header =
        ReadPictureHeader({start.data(), file_.ReadSome(0, start.data(), start.size())});
    if (frame != 0 || header.kind != PictureKind::Png || !header.sound ||
        !IsReadableSize(header.width, header.height) || header.leastBytes > file_.Size()) {
        return false;
    }
    auto reader = std::make_unique<Reader>(file_);
    if (!reader->Open() || png_get_image_width(reader->png, reader->info) != header.width ||
        png_get_image_height(reader->png, reader->info) != header.height) {
        return false;
    }
    facts_.size = {header.width, header.height};
    facts_.format = FormatOf(reader->png, reader->info);
    const std::uint64_t rowBytes = std::uint64_t{BytesPerPixel(facts_.format)} * header.width;
    constexpr std::uint64_t kRowsOfLibrary = 3;
    facts_.memory = rowBytes * (header.height + kRowsOfLibrary);
    reader_ = std::move(reader);
    return true;
}

bool PngFile::Read(Image& image) {
    const std::unique_ptr<Reader> reader = std::move(reader_);
    Image decoded(facts_.size.width, facts_.size.height, facts_.format);
    if (!reader || !decoded.IsValid() || !reader->Read(decoded)) return false;
    image = std::move(decoded);
    return true;
}

namespace {

struct Writer {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file{nullptr, &std::fclose};
    std::jmp_buf leave;
    png_structp png = nullptr;
    png_infop info = nullptr;

    Writer() = default;
    ~Writer() { png_destroy_write_struct(&png, &info); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    static void Put(png_structp png, png_bytep from, std::size_t n) {
        const Writer& writer = *static_cast<const Writer*>(png_get_io_ptr(png));
        if (std::fwrite(from, 1, n, writer.file.get()) != n) png_error(png, "not written");
    }
    static void Flush(png_structp) {}

    /// Everything that may leave. rows: null when the picture's own are the file's; between: room for one
    /// row.
    void WriteRows(const Image& image, const WrittenRows* rows, std::byte* between, PixelFormat stored) {
        png_set_write_fn(png, this, Put, Flush);
        const int colours = IsGrey(stored)     ? PNG_COLOR_TYPE_GRAY
                            : HasAlpha(stored) ? PNG_COLOR_TYPE_RGB_ALPHA
                                               : PNG_COLOR_TYPE_RGB;
        png_set_IHDR(png, info, image.width, image.height, IsWide(stored) ? 16 : 8, colours,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        // Of photos smaller than with the usual level 6, in a sixth of its time (docs/performance.md).
        png_set_compression_level(png, 1);
        png_set_compression_strategy(png, Z_RLE);
        png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB | PNG_FILTER_UP);
        png_write_info(png, info);
        if (IsWide(stored)) png_set_swap(png);
        if (!IsWide(stored) && !IsGrey(stored)) png_set_bgr(png);
        for (std::uint32_t y = 0; y < image.height; ++y) {
            const std::byte* from = between;
            if (rows) {
                rows->Get(y, between);
            } else {
                from = image.Row(y);
            }
            png_write_row(png, reinterpret_cast<png_const_bytep>(from));
        }
        png_write_end(png, nullptr);
    }

    bool Write(const Image& image, const WrittenRows* rows, std::byte* between, PixelFormat stored) {
        png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &leave, Leave, Warn);
        info = png ? png_create_info_struct(png) : nullptr;
        if (!info || setjmp(leave) != 0) return false;
        WriteRows(image, rows, between, stored);
        return true;
    }
};

/// Halves are stored as 16 bits.
PixelFormat StoredFormat(PixelFormat format) {
    using enum PixelFormat;
    if (ChannelType(format) != ChannelKind::Half) return format;
    return HasAlpha(format) ? Rgba16 : IsGrey(format) ? Grey16 : Rgb16;
}

}  // namespace

bool WritePng(const Image& image, const std::wstring& path, PixelFormat format) {
    const PixelFormat stored = StoredFormat(format);
    const WrittenRows rows(image, format, stored);
    const ByteBuffer between = AllocateBytes(std::size_t{BytesPerPixel(stored)} * image.width);
    if (!image.IsValid() || !rows.Ready() || !between) return false;
    Writer writer;
    writer.file.reset(std::fopen(ToSystemBytes(path).c_str(), "wb"));
    if (!writer.file) return false;
    const bool asItIs = image.format == stored && format == stored;
    const bool written = writer.Write(image, asItIs ? nullptr : &rows, between.get(), stored);
    return std::fclose(writer.file.release()) == 0 && written;
}

}  // namespace skyvault
