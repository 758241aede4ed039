// What libtiff reads from: a file, or its bytes. Nothing is printed; its messages are only counted.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <memory>

#include "codecs/file_source_posix.h"

namespace skyvault {

class TiffSource : public FileSource {
  public:
    using FileSource::FileSource;

    std::uint64_t position = 0;
    int errors = 0, warnings = 0;
};

using TiffHandle = std::unique_ptr<TIFF, void (*)(TIFF*)>;

/// Opened, but at none of its directories yet; null without memory and for what is no TIFF. The source must
/// outlive it.
TiffHandle OpenTiff(TiffSource& source);

}  // namespace skyvault
