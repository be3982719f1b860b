#pragma once

#include "base/CStr.h"

class CStringList;

// Lists of files that the user keeps: sections of the settings with a line for each, the number and
// the path. Interface thread.

enum class FileShelf { favourites, recent };
constexpr int mostRecentFiles = 24;

void readShelf(FileShelf shelf, CStringList* paths); ///< adds those that are there still
bool onShelf(FileShelf shelf, const CStr& path);
/// In front of the recent ones, behind the favourites; once.
void putOnShelf(FileShelf shelf, const CStr& path);
void takeOffShelf(FileShelf shelf, const CStr& path);
