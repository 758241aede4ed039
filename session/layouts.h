// The thirteen layouts, the preview, the web page and the generators, each in one row.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "projection/panorama.h"
#include "projection/preview.h"
#include "session/host.h"
#include "settings/panorama_format.h"

namespace skyvault {

/// Fills an empty panorama from files. False when it failed.
using LayoutImport = bool (*)(Panorama& panorama, const std::vector<std::wstring>& paths);

/// Writes the panorama in a layout, or builds it for the view target when path is empty. infoLog receives
/// the description of what was written. False when it failed.
using LayoutExport = bool (*)(Panorama& panorama, const std::wstring& path, const Camera& camera,
                              std::wstring& infoLog);

/// A row says everything that differs between layouts outside of their pixels. 0 or null: has none.
struct LayoutRow {
    PanoramaFormat format;
    const wchar_t* name;              ///< "Horizontal cross"
    const char* consoleName;          ///< "horizontal-cross"
    std::uint16_t importCommand = 0;  ///< menu ids
    std::uint16_t exportCommand = 0;
    std::uint16_t viewCommand = 0;
    const wchar_t* importTitle = nullptr;  ///< open dialog; single files ask once per face instead
    FileDialogKind openDialog = FileDialogKind::OpenPicture;
    FileDialogKind saveDialog = FileDialogKind::SavePicture;
    const wchar_t* exportPrefix = nullptr;  ///< WithExportPrefix
    LayoutImport importFrom = nullptr;      ///< has one with importCommand
    LayoutExport exportTo = nullptr;        ///< has one with exportCommand; also shows it
};

std::span<const LayoutRow> Layouts();

/// Null when no row has the format, command or console name.
const LayoutRow* FindLayout(PanoramaFormat format);
const LayoutRow* LayoutOfImportCommand(std::uint16_t id);
const LayoutRow* LayoutOfExportCommand(std::uint16_t id);
const LayoutRow* LayoutOfViewCommand(std::uint16_t id);
const LayoutRow* LayoutOfConsoleName(std::string_view name);

/// The path with the layout's prefix before its file name, unless the path holds the prefix already:
/// anywhere, folders included, in upper or lower case.
std::wstring WithExportPrefix(const LayoutRow& layout, const std::wstring& path);

}  // namespace skyvault
