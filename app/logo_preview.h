// The small picture beside the logo's path in the options dialog.
#pragma once

#include <windows.h>

#include <string>

#include "image/image.h"

namespace skyvault {

class LogoPreview {
  public:
    /// Reads the picture of the path, unless it is the last one's; true when it did and what is shown
    /// changes.
    bool SetPath(const std::wstring& path);

    /// Fills the rectangle: the picture in its middle, nothing where the path names no picture.
    void Draw(HDC context, const RECT& rect) const;

  private:
    std::wstring path_;
    Image picture_;
};

}  // namespace skyvault
