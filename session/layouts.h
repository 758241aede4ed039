// The thirteen layouts, the preview, the web page and the generators, each in one row.
//
// A row says everything that tells a layout from the others; whoever needs such a fact reads it here.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "projection/layout_requests.h"
#include "session/host.h"
#include "settings/panorama_format.h"

namespace skyvault {

enum class LayoutKind {
    Panorama,   ///< read and written, by batches too
    View,       ///< a look at the panorama: written, never read
    Page,       ///< the panorama's picture and files around it: written, never read
    Generator,  ///< makes a panorama from a picture
};

/// 0 or null: has none.
struct LayoutRow {
    PanoramaFormat format;
    LayoutKind kind = LayoutKind::Panorama;
    const wchar_t* name;              ///< "Horizontal cross"
    const char* consoleName;          ///< "horizontal-cross"
    std::uint16_t importCommand = 0;  ///< menu ids (resources/resource_ids.h)
    std::uint16_t exportCommand = 0;
    std::uint16_t viewCommand = 0;
    int functionKey = 0;                   ///< of the view, 1 .. 12
    const wchar_t* importTitle = nullptr;  ///< open dialog; single files ask once per face instead
    FileDialogKind openDialog = FileDialogKind::OpenPicture;
    FileDialogKind saveDialog = FileDialogKind::SavePicture;
    int sources = 1;                        ///< how many files it is read from
    const wchar_t* ownExtension = nullptr;  ///< of a file type no other layout has; null: a picture file
    const wchar_t* exportPrefix = nullptr;  ///< WithExportPrefix; batches write it in lower case
    LayoutImport import = nullptr;          ///< in every row that has an importCommand
    LayoutExport render = nullptr;          ///< a picture: for views, and for files where `write` is null
    LayoutExport write = nullptr;           ///< layouts that are more than a picture write their files
    LayoutFiles files = nullptr;  ///< of layouts that write other files than the path; FilesOfExport
};

std::span<const LayoutRow> Layouts();

/// Null when no row has the format, command or console name.
const LayoutRow* FindLayout(PanoramaFormat format);
const LayoutRow* LayoutOfImportCommand(std::uint16_t id);
const LayoutRow* LayoutOfExportCommand(std::uint16_t id);
const LayoutRow* LayoutOfViewCommand(std::uint16_t id);
const LayoutRow* LayoutOfFunctionKey(int key);
const LayoutRow* LayoutOfConsoleName(std::string_view name);

/// The files an export to the path writes and a user could have written too: six for single files, the
/// picture and its page for a web page (unless the page there is one of ours), else the path itself.
std::vector<std::wstring> FilesOfExport(const LayoutRow& layout, const std::wstring& path,
                                        const ExportSettings& settings);

/// The path with the layout's prefix before its file name, unless the path holds the prefix already:
/// anywhere, folders included, in upper or lower case.
std::wstring WithExportPrefix(const LayoutRow& layout, const std::wstring& path);

}  // namespace skyvault
