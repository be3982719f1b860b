#pragma once

#include "project/Project.h"

class CStream;

enum class LoadResult {
    good,
    notProject, ///< nothing was touched
    abandoned,  ///< after a message: the project is empty, as at the start of the program
};

/// Replaces the project by that of a stream, from where it stands to its end. The host's
/// `projectFile` has to be set before, since the audio folder lies beside it. Windows are not shown
/// yet. Interface thread.
///
/// Unknown items are skipped. An item that is not used up, or too short, or damaged inside, is told
/// in a message, and the reading goes on behind it; one that goes beyond the file, or has a
/// negative size, ends it. What is missing then is noted in the host (`CQV::damaged`).
LoadResult readProject(const Project& project, CStream* stream);

/// Opens the editors that were open when the project was saved, and shows its pages.
void showProjectWindows(const Project& project);
