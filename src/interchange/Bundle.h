#pragma once

#include "base/CStr.h"
#include "interchange/DawFiles.h"

struct Project;

constexpr const char* bundleExt = ".zip";

/// Packs a project into one archive that lacks nothing but plug-ins: a folder with the project,
/// its audio folder with all files that it plays, wherever they lie, and a list of its plug-ins.
/// The project itself stays as and where it is. `lost` takes a line for each file that is not
/// there. Interface thread.
DawResult packProject(const Project& project, const CStr& path, std::vector<CStr>& lost,
                      const DawWatch& watch = {});
