// Picture files as tests use them: read or not, written or not.
#pragma once

#include <string>

#include "codecs/picture_files.h"

namespace skyvault::test {

/// The picture of a file; empty when it cannot be read.
inline Image Loaded(const std::wstring& path, std::uint32_t frame = 0, const PictureSize& target = {}) {
    Image image;
    const bool done = LoadPicture(path, image, {.frame = frame, .target = target}).IsDone();
    return done ? std::move(image) : Image();
}

/// infoLog: receives the description of the file, or nothing.
inline bool Saved(Image& image, const std::wstring& path, PixelFormat format = PixelFormat::None,
                  std::wstring* infoLog = nullptr, bool bleed = false) {
    const Outcome outcome = SavePicture(image, path, {.format = format, .bleed = bleed});
    if (infoLog != nullptr) *infoLog = outcome.infoLog;
    return outcome.IsDone();
}

}  // namespace skyvault::test
