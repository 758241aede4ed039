// Where a layout is shown when it is not written to a file: the main window, or a test's recorder.
#pragma once

#include <cstdint>

#include "image/image.h"

namespace skyvault {

struct ClientSize {
    std::int32_t width = 0, height = 0;
};

class ViewTarget {
  public:
    virtual ~ViewTarget() = default;
    /// Client area in pixels.
    virtual ClientSize Size() const = 0;
    /// Presents the picture, fitted and centred; false when it cannot be drawn.
    virtual bool Show(const Image& picture) = 0;
};

}  // namespace skyvault
