// BMP files as the program reads them.

#include <cstddef>
#include <cstdint>

#include "codecs/bmp_file_posix.h"
#include "fuzz/picture_reader_posix.h"

using namespace skyvault;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ReadWith<BmpFile>({reinterpret_cast<const std::byte*>(data), size});
    return 0;
}
