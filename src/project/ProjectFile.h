#pragma once

#include "base/CStr.h"
#include "project/Project.h"
#include "project/ProjectReader.h"

// Projects as files: open, save, save elsewhere. Interface thread; messages tell what went wrong.

/// Writes the project into a stream; false after a message.
bool saveToStream(const Project& project, CStream* stream);
/// Reads it from one; what is open already stays if that is none (see `readProject`).
LoadResult loadFromStream(const Project& project, CStream* stream);

/// Opens a project file; nothing happens without the file. `remember`: as the last one used.
LoadResult openProject(const Project& project, const CStr& path, bool remember);

/// Saves under a name, which becomes the project's. The file that was there is replaced only once
/// the new one is on the disk, with the audio that it refers to, and stays as "name.qv~"; the
/// project counts as unmodified then. False after a message: the old file is untouched, and so are
/// the changes.
///
/// A file that is write-protected is replaced only after a question, and so is the project's own
/// when it was read with damage; that one stays as "name.damaged.qv".
bool saveProject(const Project& project, const CStr& path);
/// The same in another folder: the audio folder there gets copies of all samples that the project
/// needs to have with it.
bool saveProjectAs(const Project& project, const CStr& path);
/// Writes the project into another file, and nothing else: it keeps its name and its changes.
bool saveCopy(const Project& project, const CStr& path);
