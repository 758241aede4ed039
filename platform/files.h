// Files and folders: tests, moves, creation, and the program's well-known places.
//
// Paths are wide text; on Linux they are UTF-8 on disk. Every function reports failure by its result.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/outcome.h"

namespace skyvault {

/// True when the path exists and is not a folder.
bool FileExists(const std::wstring& path);
bool FolderExists(const std::wstring& path);

/// True when both paths lead to one folder, however they are spelled.
bool SameFolder(const std::wstring& a, const std::wstring& b);

/// Size in bytes; 0 when the file cannot be found or the path is empty.
std::uint64_t FileSizeOf(const std::wstring& path);

/// Moves a file to a name that is not taken (MoveFileW): fails when `to` exists.
bool MoveToNewName(const std::wstring& from, const std::wstring& to);

/// Renames a file, replacing what has the name `to` already, in one step as far as the system can. The new
/// file gets the old one's permissions; a write-protected one is not replaced.
bool MoveOver(const std::wstring& from, const std::wstring& to);

/// Makes an empty file. False when anything has the name already.
bool MakeNewFile(const std::wstring& path);

/// The file that would be written under the path: where a symbolic link leads, else the path itself. Empty
/// when that is neither a plain file nor a free name: a pipe, a device, a link that leads nowhere. (On
/// Windows the path itself.)
std::wstring WrittenThrough(const std::wstring& path);

/// True when both paths name one place for a file, however they are spelled: two hard links are two places.
bool SamePlace(const std::wstring& a, const std::wstring& b);

/// Why nothing can be written under the path: what the system says when asked for a little more room in
/// `temporary`, a file in the same folder, which may be gone and is gone afterwards.
Cause WhyNotWritten(const std::wstring& path, const std::wstring& temporary);

/// Why a file cannot be opened for reading; Unknown when it can.
Cause WhyNotOpened(const std::wstring& path);

bool RemoveFile(const std::wstring& path);

/// Creates one folder whose parent exists. False when anything has the name already.
bool MakeOneFolder(const std::wstring& path);

/// False, and the folder stays, when anything is in it.
bool RemoveEmptyFolder(const std::wstring& path);

/// Removes a folder that holds files only, with the files; true when there is no such folder (any more).
bool RemoveFolderOfFiles(const std::wstring& path);

/// Creates the folder and every missing parent. Either slash is accepted and a trailing one ignored.
/// Each created folder is reported: New folder created: "C:\A" on the debugger channel. An empty path
/// fails; a folder that cannot be created fails the whole call.
bool CreateFolder(const std::wstring& path);

/// Names (not paths) of the entries directly in the folder, without "." and "..", in the system's order;
/// empty when the folder cannot be read.
std::vector<std::wstring> FindFiles(const std::wstring& folder);

/// The folder of the program file, without a trailing separator.
std::wstring ProgramFolder();

/// The user's folder for application data and the one for documents, as the system names them; empty when
/// there is none. (Linux: $XDG_CONFIG_HOME or ~/.config; ~/Documents.)
std::wstring UserDataFolder();
std::wstring UserDocumentsFolder();

/// The user's application-data folder + "Brambleworks Studio" + "Skyvault", created when missing;
/// empty when it cannot be found or made.
std::wstring ApplicationDataFolder();

/// The user's application-data folder + "Brambleworks Studio" + "Temp", created when missing; empty when it
/// cannot be found or made.
std::wstring TemporaryFilesFolder();

/// The system's folder for temporary files, which all users share: $TMPDIR, else /tmp; on Windows the user's
/// own.
std::wstring SystemTemporaryFolder();

/// The user's documents folder + "Skyvault", created when missing; empty when it cannot be found or made.
std::wstring DocumentsFolder();

}  // namespace skyvault
