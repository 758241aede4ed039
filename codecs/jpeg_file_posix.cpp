#include "codecs/jpeg_file_posix.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <memory>

// After what it takes for granted.
#include <jpeglib.h>
// And after that.
#include <jerror.h>

#include "codecs/written_rows.h"
#include "image/pixel_rows.h"
#include "platform/memory_budget.h"
#include "platform/utf8.h"

namespace skyvault {
namespace {

/// Rows the library is asked for at once.
constexpr std::uint32_t kRowsAtOnce = 16;

/// The library's messages. None is printed, and the first error, or warning of damage, leaves for the place
/// that `leave` was set at: between it and the library no object has a destructor.
struct Messages {
    jpeg_error_mgr manager;  // first: the library only knows this
    std::jmp_buf leave;
    bool endMissing;
};

Messages& MessagesOf(j_common_ptr info) {
    return *reinterpret_cast<Messages*>(info->err);
}

[[noreturn]] void Leave(j_common_ptr info) {
    std::longjmp(MessagesOf(info).leave, 1);
}

/// level < 0: a warning.
void LeaveIfDamaged(j_common_ptr info, int level) {
    if (level >= 0) return;
    switch (info->err->msg_code) {
        case JWRN_JPEG_EOF:
            MessagesOf(info).endMissing = true;
            break;
        case JWRN_ADOBE_XFORM:      // taken for the usual one
        case JWRN_JFIF_MAJOR:       // a version yet to come
        case JWRN_EXTRANEOUS_DATA:  // between two markers
            break;
        default:
            Leave(info);
    }
}

void PrintNothing(j_common_ptr) {}

jpeg_error_mgr* Prepare(Messages& messages) {
    jpeg_error_mgr* const manager = jpeg_std_error(&messages.manager);
    manager->error_exit = Leave;
    manager->emit_message = LeaveIfDamaged;
    manager->output_message = PrintNothing;
    messages.endMissing = false;
    return manager;
}

struct Decompressor {
    jpeg_decompress_struct info{};
    Messages messages{};

    Decompressor() { info.err = Prepare(messages); }
    ~Decompressor() { jpeg_destroy_decompress(&info); }
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;
};

/// Inverted cyan, magenta, yellow and black to blue, green, red and full alpha, in place.
void ConvertCmykRow(std::byte* row, std::uint32_t width) {
    for (std::uint32_t x = 0; x < width; ++x, row += 4) {
        const auto at = [&](int i) { return std::to_integer<std::uint32_t>(row[i]); };
        const std::uint32_t black = at(3);
        const auto mixed = [&](std::uint32_t ink) {
            return static_cast<std::byte>((ink * black + 127) / 255);
        };
        const std::byte red = mixed(at(0)), green = mixed(at(1)), blue = mixed(at(2));
        row[0] = blue;
        row[1] = green;
        row[2] = red;
        row[3] = std::byte{255};
    }
}

/// Whether the scans of a progressive file told all bits of all coefficients.
bool IsComplete(const jpeg_decompress_struct& info) {
    if (!info.coef_bits) return true;
    for (int component = 0; component < info.num_components; ++component) {
        for (int i = 0; i < DCTSIZE2; ++i) {
            if (info.coef_bits[component][i] != 0) return false;
        }
    }
    return true;
}

/// Everything that may leave.
bool DecodeAll(jpeg_decompress_struct& info, const std::byte* bytes, std::size_t size, Image& image) {
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, reinterpret_cast<const unsigned char*>(bytes), size);
    jpeg_read_header(&info, TRUE);
    const int components = image.format == PixelFormat::Grey8 ? 1 : image.format == PixelFormat::Rgb8 ? 3 : 4;
    if (info.image_width != image.width || info.image_height != image.height ||
        info.num_components != components) {
        return false;
    }
    if (components == 3) info.out_color_space = JCS_EXT_BGR;
    if (!jpeg_start_decompress(&info) || info.output_components != components) return false;
    while (info.output_scanline < info.output_height) {
        const std::uint32_t first = info.output_scanline;
        const std::uint32_t count = std::min(kRowsAtOnce, info.output_height - first);
        std::array<JSAMPROW, kRowsAtOnce> rows;
        for (std::uint32_t i = 0; i < count; ++i) {
            rows[i] = reinterpret_cast<JSAMPROW>(image.Row(first + i));
        }
        const std::uint32_t read = jpeg_read_scanlines(&info, rows.data(), count);
        for (std::uint32_t i = 0; components == 4 && i < read; ++i) {
            ConvertCmykRow(image.Row(first + i), image.width);
        }
    }
    return IsComplete(info) || !MessagesOf(reinterpret_cast<j_common_ptr>(&info)).endMissing;
}

bool Decode(Decompressor& decompressor, const std::byte* bytes, std::size_t size, Image& image) {
    if (setjmp(decompressor.messages.leave) != 0) return false;
    return DecodeAll(decompressor.info, bytes, size, image);
}

struct Compressor {
    jpeg_compress_struct info{};
    Messages messages{};

    Compressor() { info.err = Prepare(messages); }
    ~Compressor() { jpeg_destroy_compress(&info); }
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;
};

/// Everything that may leave. rows: null when the picture's own are the file's; between: room for one row.
void EncodeAll(jpeg_compress_struct& info, std::FILE* file, const Image& image, const WrittenRows* rows,
               std::byte* between, bool grey, int quality) {
    constexpr int kBestWithoutAllChroma = 90;
    jpeg_create_compress(&info);
    jpeg_stdio_dest(&info, file);
    info.image_width = image.width;
    info.image_height = image.height;
    info.input_components = grey ? 1 : 3;
    info.in_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    const int sampling = grey || quality > kBestWithoutAllChroma ? 1 : 2;
    info.comp_info[0].h_samp_factor = info.comp_info[0].v_samp_factor = sampling;
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        const std::byte* from = between;
        if (rows) {
            rows->Get(info.next_scanline, between);
        } else {
            from = image.Row(info.next_scanline);
        }
        JSAMPROW row = reinterpret_cast<JSAMPROW>(const_cast<std::byte*>(from));
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
}

bool Encode(Compressor& compressor, std::FILE* file, const Image& image, const WrittenRows* rows,
            std::byte* between, bool grey, int quality) {
    if (setjmp(compressor.messages.leave) != 0) return false;
    EncodeAll(compressor.info, file, image, rows, between, grey, quality);
    return true;
}

}  // namespace

bool JpegFile::Select(std::uint32_t frame) {
    facts_ = {};
    bytes_.reset();
    const std::uint64_t size = file_.Size();
    if (frame != 0) return false;
    if (size > MemoryBudget()) {
        facts_.memory = size;  // of its file alone
        return true;
    }
    bytes_ = AllocateBytes(static_cast<std::size_t>(size));
    if (!bytes_ || !file_.Read(0, bytes_.get(), static_cast<std::size_t>(size))) return false;
    structure_ = ReadJpegStructure({bytes_.get(), static_cast<std::size_t>(size)});
    if (!IsSoundJpeg(structure_, size)) return false;
    facts_.size = {structure_.width, structure_.height};
    facts_.format = structure_.components == 1   ? PixelFormat::Grey8
                    : structure_.components == 3 ? PixelFormat::Rgb8
                                                 : PixelFormat::Rgba8;
    // Scans that hold a part of every block leave coefficients of 16 bits between them.
    const bool inParts = structure_.progressive || structure_.scans > 1;
    const std::uint64_t coefficients = inParts ? structure_.blocks * 64 * 2 : 0;
    facts_.memory = std::uint64_t{BytesPerPixel(facts_.format)} * structure_.width * structure_.height +
                    coefficients + size;
    return true;
}

bool JpegFile::Read(Image& image) {
    Image decoded(facts_.size.width, facts_.size.height, facts_.format);
    if (!bytes_ || !decoded.IsValid()) return false;
    Decompressor decompressor;
    if (!Decode(decompressor, bytes_.get(), static_cast<std::size_t>(file_.Size()), decoded)) return false;
    image = std::move(decoded);
    return true;
}

bool WriteJpeg(const Image& image, const std::wstring& path, PixelFormat format, int quality) {
    if (!image.IsValid() || image.width > JPEG_MAX_DIMENSION || image.height > JPEG_MAX_DIMENSION)
        return false;
    const bool grey =
        format == PixelFormat::Grey8 || format == PixelFormat::Grey16 || format == PixelFormat::GreyHalf;
    const PixelFormat stored = grey ? PixelFormat::Grey8 : PixelFormat::Rgb8;
    const bool asItIs = image.format == stored && format == stored;
    const WrittenRows rows(image, format, stored);
    const ByteBuffer between = AllocateBytes(std::size_t{BytesPerPixel(stored)} * image.width);
    if (!rows.Ready() || !between) return false;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(ToSystemBytes(path).c_str(), "wb"),
                                                         &std::fclose);
    if (!file) return false;
    bool written = false;
    {
        Compressor compressor;
        written = Encode(compressor, file.get(), image, asItIs ? nullptr : &rows, between.get(), grey,
                         quality != 0 ? quality : kJpegQuality);
    }
    return std::fclose(file.release()) == 0 && written;
}

}  // namespace skyvault
