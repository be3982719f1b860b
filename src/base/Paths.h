#pragma once

#include "base/CStr.h"

#include <cstdint>
#include <vector>

class CStringList;

/// What `addSep` appends. When a path is taken apart a backslash separates as well.
constexpr char folderSeparator = '/';

CStr asAppname(); ///< full path of the running program; empty if that cannot be told

CStr extractFilePath(
    const CStr& path); ///< up to and with the last separator; empty if that is at 0
CStr extractFileName(const CStr& path); ///< behind the last separator
/// From the last dot of the file name on, with the dot; empty when it has none.
CStr extractFileExt(const CStr& path);
/// With another extension in place of that from the last dot on. A file name without a dot, but for
/// its first character, gets it appended.
CStr changeFileExt(const CStr& path, const CStr& ext);
CStr extractRootPath(const CStr& path); ///< up to the first ":", with a backslash; else empty
/// The folder around a folder, with its separator; that of the root is the root.
CStr uplevel(const CStr& folder);
/// Ends the path in a separator, unless it is empty or has one.
CStr& addSep(CStr& path);
CStr addSep(const CStr& path);
CStr addSep(CStr&& path);

bool folderExists(const CStr& path);
bool fileExists(const CStr& path); ///< a file or a device
/// It exists and cannot be opened for appending.
bool isReadOnly(const CStr& path);
bool isWritable(const CStr& folder); ///< new files can be made there
/// The path from the root on, without ".", ".." and the folder that the program was started in.
CStr absolutePath(const CStr& path);
/// Whether two paths lead to one folder or file. What is not there is compared by its name.
bool samePlace(const CStr& a, const CStr& b);
/// Somebody took care that it is not written to, though that might be possible.
bool isProtected(const CStr& file);
/// Below /media or /run/media, or on a device that says so; false when that cannot be told.
bool isRemovable(const CStr& path);
bool isFolderEmpty(const CStr& path);  ///< a missing one is
int64_t getFileSize(const CStr& path); ///< bytes; 0 without the file
bool createDir(const CStr& path);      ///< with those around it; true if it is there then
/// Overwrites `to`. True when all of it was copied, also for a file onto itself.
bool copyFile(const CStr& from, const CStr& to);
bool copyFile2(const CStr& from, const CStr& to); ///< the same

/// Adds the names in a folder, those of folders and of files that pass `filter`, without those that
/// begin with a dot. With `ordered` by name without regard to case. Either list may be null. False
/// when the folder cannot be read.
bool readDir(const CStr& path, const CStr& filter, CStringList* folders, CStringList* files,
             bool ordered);
/// Whether a file name has one of the extensions of a filter such as ".wav|.aif", whatever the
/// case. An empty one and ".*" take all; `any` tells that.
bool hasFileExt(const CStr& name, const CStr& filter, bool& any);

/// The first name in a folder that is free: `stem` and `ext`, from the second on with a number from
/// 1 between them.
CStr getUniqueFilename(const CStr& stem, const CStr& ext, const CStr& folder);

/// The same, and makes the file, empty, so that nobody else takes the name. Empty if that fails.
CStr makeUniqueFile(const CStr& stem, const CStr& ext, const CStr& folder);
/// Brings to the disk what was written to files or folders by whomever; false if one of them could
/// not be brought there. What is not there counts as done.
bool flushToDisk(const std::vector<CStr>& paths);

CStr getHomeFolder(); ///< the environment's HOME, else that of the account
CStr getUserFolder(); ///< ".Sondrava" at home, made when missing; empty if it cannot be
/// Where a file that the program keeps for itself belongs: beside the program, or in the user's
/// folder where that one, or the file, takes no writing.
CStr ownFile(const CStr& programFolder, const CStr& name);
CStr getTempFolder();                      ///< empty if there is none
CStr getDesktopFolder();                   ///< empty if there is none
void getSystemFolders(CStringList* paths); ///< home and root
/// The places that file dialogs offer.
void getDefaultFolders(CStringList* names, CStringList* paths);
