// Why a picture file could not be read: looked for once that is known.
#pragma once

#include <string>

#include "platform/outcome.h"

namespace skyvault {

/// What stands in the way of reading the file as a picture, as far as the system and the file tell: Damaged
/// when the file is of a kind that is read, and whole as far as that is seen without decoding.
Cause WhyNotRead(const std::wstring& path);

/// The outcome of a reading, with the cause where the file could not be opened.
Outcome WithCause(Outcome read);

}  // namespace skyvault
