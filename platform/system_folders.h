// What files.cpp needs from each system.
#pragma once

#include <string>

namespace skyvault {

/// Creates one folder whose parent exists.
bool MakeOneFolder(const std::wstring& path);

/// Makes an empty file. False when anything has the name already.
bool MakeNewFile(const std::wstring& path);

/// Removes an empty folder.
bool RemoveOneFolder(const std::wstring& path);

/// The user's folder for application data and the one for documents; empty when there is none.
std::wstring UserDataFolder();
std::wstring UserDocumentsFolder();

}  // namespace skyvault
