// The parts of the help the argument parser does not write itself: layouts and examples.
#pragma once

#include <string>

#include "session/layouts.h"

namespace skyvault {

/// Layouts --from and --to know. Generators are rows of the layouts' table, but no layouts.
bool IsImportLayout(const LayoutRow& layout);
bool IsExportLayout(const LayoutRow& layout);
/// The kinds of generate.
bool IsGenerator(const LayoutRow& layout);

/// UTF-8.
std::string MainFooter();
std::string ConvertFooter();
std::string GenerateFooter();
std::string BatchFooter();
std::string InfoFooter();

}  // namespace skyvault
