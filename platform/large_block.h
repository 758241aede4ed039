// Memory for whole pictures.
#pragma once

#include <cstddef>

namespace skyvault {

/// Like std::malloc, and released with std::free, but where the system offers large pages on request they are
/// requested for blocks of several megabytes: touching fresh memory then costs a fraction, and reading from
/// all over a picture misses fewer address translations.
void* AllocateBlock(std::size_t size);

}  // namespace skyvault
