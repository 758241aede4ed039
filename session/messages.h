// Every failure in words, once: for the window's message boxes and the console's lines.
#pragma once

#include <string>

#include "platform/outcome.h"

namespace skyvault {

/// What a message box says; empty for what is done, and for a generator that did without its picture.
std::wstring MessageOf(const Outcome& outcome);

/// One line that names the file, for programs that work on several.
std::wstring LineOf(const Outcome& outcome);

}  // namespace skyvault
