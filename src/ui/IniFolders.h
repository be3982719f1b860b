#pragma once

#include "base/CStr.h"

class CQV;
class CStringList;

/// Kinds of folders that the user names for the browser.
enum FolderMode : int {
    foldersProject = 11,
    foldersSample = 12,
    foldersPlugin = 13,
    foldersPreset = 20,
    foldersClip = 21,
};

// Each kind is a section of the settings with a line for each folder, "number=path".

CStr modeToSection(int mode); ///< empty for any other number

/// Adds the paths of a section. While it is empty these are the folders that the program has found.
void readIniFolders(CQV* host, const CStr& section, CStringList* paths);
/// Adds a folder behind those that `readIniFolders` tells; one that is among them stays as it is.
void addIniFolder(CQV* host, const CStr& section, const CStr& path);
/// Takes a folder out. A section that becomes empty shows those found by the program again.
void delIniFolder(CQV* host, const CStr& section, const CStr& path);
