// TIFF files as the program reads them, page by page: its own checks and the library behind them.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "codecs/tiff_file_posix.h"
#include "fuzz/require.h"

using namespace skyvault;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint64_t kMostMemory = std::uint64_t{32} << 20;
    TiffFile file({reinterpret_cast<const std::byte*>(data), size});
    // Few pages are enough: each is read alike.
    for (std::uint32_t page = 0; page < 4 && file.Select(page); ++page) {
        const PictureFacts facts = file.Facts();
        Require(facts.size.width > 0 && facts.size.height > 0 && facts.frameCount > page);
        // What the picture takes is counted before it is asked for.
        Require(facts.memory >=
                std::uint64_t{BytesPerPixel(facts.format)} * facts.size.width * facts.size.height);
        if (facts.memory > kMostMemory) continue;
        Image image;
        if (!file.Read(image)) continue;
        Require(image.width == facts.size.width && image.height == facts.size.height &&
                image.format == facts.format);
        // Every byte is the file's: memory that nobody wrote to would be seen here.
        Image again;
        Require(file.Select(page) && file.Read(again) &&
                std::equal(image.pixels.get(), image.pixels.get() + image.ByteCount(), again.pixels.get()));
    }
    return 0;
}
