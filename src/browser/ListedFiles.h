#pragma once

#include "base/CStr.h"

#include <map>
#include <string>

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

/// Words that the user has given to files, in small letters with blanks between, by path.
using FileTags = std::map<std::string, std::string>;
FileTags readTags(); ///< of those that are there still
/// No words take them away.
void setTags(const CStr& path, const CStr& words);
/// A file has another path: it stays where the user has listed it.
void moveListed(const CStr& from, const CStr& to);
