// JPEG files as the program reads them: the walk along their markers, and the library behind it.

#include <cstddef>
#include <cstdint>

#include "codecs/jpeg_file_posix.h"
#include "fuzz/picture_reader_posix.h"

using namespace skyvault;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::byte> file(reinterpret_cast<const std::byte*>(data), size);
    const JpegStructure jpeg = ReadJpegStructure(file);
    if (IsSoundJpeg(jpeg, size)) {
        // What the library gets is no larger than the file can be.
        Require(jpeg.width > 0 && jpeg.height > 0 && jpeg.scans <= 100);
        Require(jpeg.arithmetic || jpeg.blocks <= std::uint64_t{8} * (size + 1));
    }
    ReadWith<JpegFile>(file);
    return 0;
}
