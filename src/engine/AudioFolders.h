#pragma once

#include "base/CStr.h"

/// Where a project keeps its audio: beside its file in a folder of its own, or, as long as it is
/// not saved or lies on a removable medium, in the temp audio folder. Interface thread.
class AudioFolders {
public:
    CStr projectFile;     ///< full path; empty while the project is unsaved
    CStr audioFolder;     ///< a plain name beside the project's file; empty until there is one
    CStr tempAudioFolder; ///< a setting, in force while that folder exists

    /// Full path of the project's audio folder. Empty with `none`, while the project is unsaved,
    /// and where it has no folder yet, unless `create` makes it. A name that leads elsewhere than
    /// to a folder right beside the project's file counts as none.
    CStr getAudioFolder(bool create, bool, bool none);
    /// The same, or the one that the project would get.
    CStr expectedAudioFolder() const;
    /// The setting's folder, else one in the user's, which outlives a restart of the machine, else
    /// the system's; empty if there is none.
    CStr getTempAudioFolder() const;
    bool needCache() const; ///< the project's file lies on a removable medium

    /// Where new audio goes; sets `inTemp` if that is the temp folder. Empty if there is none.
    CStr newSampleFolder(bool* inTemp);
    /// A free name for a new file, with stem and extension of `like`; empty without a folder.
    CStr requireSampleFilename(const CStr& like, bool* inTemp);

    /// Whether a file lies right in the project's audio folder, by whatever way its path leads
    /// there. False while the folder does not exist.
    bool inAudioFolder(const CStr& file);
    /// The path of a file, free of links, that may be deleted: a plain one right in the audio or
    /// temp folder, whose path is written exactly as that of the folder. Else empty.
    CStr deletablePath(const CStr& file);

private:
    CStr projectPath() const;
    CStr folderName() const;
};

/// Deletes a plain file; false unless `path`, as `deletablePath` gave it, still has no link in it.
bool deleteSampleFile(const CStr& path);

/// The path without links and dots; empty if nothing is there.
CStr canonicalPath(const CStr& path);
