#pragma once

#include "base/CStr.h"

#include <functional>
#include <string>
#include <vector>

class CSeq;
class PluginList;

// Songs to and from DAWproject 1.0 archives (.dawproject). Interface thread.

constexpr const char* dawFileExt = ".dawproject";

enum class DawResult {
    good,
    cancelled,
    unreadable, ///< no such archive, or a damaged one
    notWritten, ///< the disk is full, or takes no file there
    noRoom,     ///< the song has no room for its tracks, or the disk for its audio
};

/// Told what is worked on and what part of all is done, 0 to 1; false cancels.
using DawWatch = std::function<bool(const CStr& what, float done)>;

/// Writes the current program of a song: tracks, groups, clips, notes, automation of strips,
/// tempos, signatures, markers, equalisers, the audio that clips play, and instruments, racks and
/// plug-ins as files. A former file stays until the new one is whole. `lost` takes a line for each
/// thing that such a file cannot hold.
DawResult exportDawProject(CSeq* seq, const CStr& path, std::vector<CStr>& lost,
                           const DawWatch& watch = {});

/// Brings what an archive holds into the current program as one step of the history: new tracks
/// behind the others. Tempos, signatures and markers come only into a song without content. `lost`
/// takes a line for each thing that the song cannot hold, or that this does not read. Nothing has
/// changed where the result is another than `good`. Plug-ins are those of `plugins`, which may be
/// null.
DawResult importDawProject(CSeq* seq, const CStr& path, std::vector<CStr>& lost,
                           const DawWatch& watch = {}, const PluginList* plugins = nullptr);
