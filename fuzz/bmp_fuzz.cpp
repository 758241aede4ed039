// BMP files as the program reads them: its own reader for the plain ones, the library for the rest.

#include <cstddef>
#include <cstdint>

#include "fuzz/picture_file_posix.h"

using namespace skyvault;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ReadAsPictureFile({reinterpret_cast<const std::byte*>(data), size});
    return 0;
}
