// The open and save dialogs of the three kinds of file: what they offer, and the extension a chosen name is
// given. The folder picker.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "session/host.h"
#include "settings/app_state.h"

namespace skyvault {

class FileDialogs {
  public:
    /// Builds the list of pictures that can be opened, from the codecs of this machine; COM must be
    /// initialised. False when that is not possible: no dialog may be asked for then.
    bool BuildFilters();

    /// As Host::AskForFile.
    std::wstring Ask(HWND owner, const std::wstring& startPath, FileDialogKind kind,
                     const std::wstring& title, AppState& settings, const AcceptPath& accept = {}) const;

  private:
    std::wstring pictureOpenFilter_;
};

/// The chosen folder, or empty when cancelled. COM must be initialised.
std::wstring AskForFolder(HWND owner, const std::wstring& title, const std::wstring& startFolder);

/// True for patterns like "*.BMP;*.GIF;": as many "*" as "." as ";", and otherwise only capital letters and
/// digits.
bool IsWellFormedPatternList(std::wstring_view patterns);

/// The picture open list: the fixed patterns and those of the codecs' upper-case extensions, each once, as
/// one filter and "All files" behind it; parts end in a null, as the dialogs take them. Extensions of a
/// codec that would spoil the list are left out. Empty when there are no codecs at all or the fixed list
/// is not well formed.
std::wstring BuildPictureOpenFilter(const std::vector<std::wstring>& codecExtensions);

/// The picture save list, 1-based: BMP, DDS, GIF, JPG, PNG, TIF.
std::wstring PictureSaveFilter();

/// ".bmp" … ".tif" for 1 … 6.
std::wstring_view PictureSaveExtension(std::int32_t filterIndex);

/// The index itself when it is one of the save list, else the default one (JPG).
std::int32_t CheckedFilterIndex(std::int32_t filterIndex);

/// One filter of a name and its pattern, ended as the dialogs take it.
std::wstring SingleFilter(std::wstring_view name, std::wstring_view pattern);

/// The path with the extension (".png") at its end: it takes the place of an extension the dialogs know
/// ("pano.jpg"), and is added to any other name ("pano", "pano v1.2").
std::wstring GiveExtension(const std::wstring& path, std::wstring_view extension);

}  // namespace skyvault
