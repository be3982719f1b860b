#pragma once

#include "base/CStr.h"

#include <vector>

class CSampler;

/// A program of the General MIDI set, a file that lies beside the program.
struct SetProgram {
    int number; ///< 0 to 127, as MIDI counts
    CStr name, family, path;
};

/// The folder of the set: "sounds" beside the running program. It may be missing.
CStr soundSetFolder();

/// The programs in the folders of a set, whose files are called "NNN Name.qvs" with numbers from
/// 001 on, in the order of their numbers. Empty without such a folder. Interface thread.
std::vector<SetProgram> listSoundSet(const CStr& folder);

/// Replaces the programs of a sampler, which nothing plays yet, by those of a file. False when the
/// file cannot be read, or holds none; the sampler has none then.
bool readPrograms(CSampler* sampler, const CStr& path);
