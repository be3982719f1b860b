#pragma once

#include "base/CStr.h"

#include <vector>

class CQV;

// Where plug-ins lie. Interface thread.

/// Looks for a file below a folder, by its name whatever the case: `name` becomes its path, and
/// `found` true. The folder itself comes first, then those inside, each once.
void findPlug(CStr& name, const CStr& folder, bool& found);
/// Whether the user has named folders of plug-ins.
bool hasVSTFolders();
/// Those, or the one beside the program; behind them those of the system and of the home folder, as
/// far as they exist.
std::vector<CStr> pluginFolders(CQV* host);
/// Every library and bundle in those folders, each once, whatever links lead to it.
std::vector<CStr> pluginFiles(CQV* host);
/// What a plug-in that a project names, as in `PluginFile`, stands for: the file itself, if it lies
/// in one of the folders or the user has picked it once, else one of that name in them. Empty when
/// there is none.
CStr allowedPlugin(CQV* host, const CStr& path);
/// The user has picked a file in a dialog.
void allowPlugin(const CStr& path);
