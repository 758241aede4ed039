#include "codecs/exr_file.h"
#include "codecs/exr_header.h"
#include "fuzz/half_picture.h"

using namespace skyvault;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ReadHalfPicture(BytesOf(data, size), kExrHeaderLimit, InspectExr, ReadExr);
    return 0;
}
