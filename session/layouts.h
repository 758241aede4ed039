// The thirteen layouts, the preview, the web page and the generators, each in one row.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "session/host.h"
#include "settings/panorama_format.h"

namespace skyvault {

/// A row says everything that differs between layouts outside of their pixels. 0 or null: has none.
struct LayoutRow {
    PanoramaFormat format;
    const wchar_t* name;              ///< "Horizontal cross"
    const char* consoleName;          ///< "horizontal-cross"
    std::uint16_t importCommand;      ///< menu ids
    std::uint16_t exportCommand;
    std::uint16_t viewCommand;
    const wchar_t* importTitle;       ///< open dialog
    FileDialogKind openDialog;
    FileDialogKind saveDialog;
    const wchar_t* exportPrefix;      ///< put before the file name unless the path holds it already
    bool importReady, exportReady;    ///< whether this build can convert it
};

std::span<const LayoutRow> Layouts();

/// Null when no row has the format, command or console name.
const LayoutRow* FindLayout(PanoramaFormat format);
const LayoutRow* LayoutOfImportCommand(std::uint16_t id);
const LayoutRow* LayoutOfExportCommand(std::uint16_t id);
const LayoutRow* LayoutOfViewCommand(std::uint16_t id);
const LayoutRow* LayoutOfConsoleName(std::string_view name);

}  // namespace skyvault
