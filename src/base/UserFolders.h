#pragma once

#include "base/CStr.h"

/// The folder that the desktop keeps for a kind of files, by its key in the list of user folders
/// ("user-dirs.dirs" of the configuration folder): "DESKTOP", "DOCUMENTS", "MUSIC". Without a line
/// for it `name` in the home folder. Empty when the folder is not there, and when it is the home
/// folder itself, by which the list says that there is none.
CStr userFolder(const char* key, const char* name);
