#include "app/copy_picture.h"

#include <cstring>
#include <memory>

#include "image/pixel_rows.h"

namespace skyvault {
namespace {

/// Rows of a bitmap are whole numbers of four bytes, and the lowest comes first.
constexpr std::size_t BitmapStride(std::uint32_t width) {
    return (std::size_t{width} * 3 + 3) / 4 * 4;
}

struct FreeGlobal {
    void operator()(void* memory) const { GlobalFree(memory); }
};
/// Memory of the clipboard's kind.
using GlobalMemory = std::unique_ptr<void, FreeGlobal>;

/// A bitmap's header and rows; null without memory.
GlobalMemory MakeBitmap(const Image& picture) {
    const std::size_t stride = BitmapStride(picture.width);
    const std::size_t pixelBytes = stride * picture.height;
    GlobalMemory memory(GlobalAlloc(GHND, sizeof(BITMAPINFOHEADER) + pixelBytes));
    auto* const bytes = memory ? static_cast<std::byte*>(GlobalLock(memory.get())) : nullptr;
    if (bytes == nullptr) return nullptr;
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = static_cast<LONG>(picture.width);
    header.biHeight = static_cast<LONG>(picture.height);
    header.biPlanes = 1;
    header.biBitCount = 24;
    header.biCompression = BI_RGB;
    header.biSizeImage = static_cast<DWORD>(pixelBytes);
    std::memcpy(bytes, &header, sizeof header);
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        ConvertRow(picture.format, picture.Row(picture.height - 1 - y), PixelFormat::Rgb8,
                   bytes + sizeof header + stride * y, picture.width);
    }
    GlobalUnlock(memory.get());
    return memory;
}

}  // namespace

bool CopyPicture(HWND owner, const Image& picture) {
    // The header counts the bytes in 32 bits.
    if (!picture.IsValid() || BitmapStride(picture.width) * picture.height > 0x7fffffff) return false;
    if (!OpenClipboard(owner)) return false;
    GlobalMemory bitmap = MakeBitmap(picture);
    const bool taken = bitmap && EmptyClipboard() && SetClipboardData(CF_DIB, bitmap.get());
    if (taken) static_cast<void>(bitmap.release());  // the clipboard's now
    CloseClipboard();
    return taken;
}

}  // namespace skyvault
