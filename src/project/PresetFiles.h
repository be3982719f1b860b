#pragma once

#include <functional>

class CArp;
class CEffect;
class CFX;
class CLayer;
class CSampler;
class CSeq;
class CStr;
class CStream;
class CTrack;

// Files that hold one thing to play with. Interface thread.
//
// What is saved replaces the file only when all of it is written; else the result is false, after a
// message, and the old file stays. What is opened is one step that can be undone; the operations
// for that are those of the components: `CSampler::openBank`, `CEffect::openProg`,
// `CArp::openProg`.

/// Saves what `write` puts into the stream.
bool savePreset(const CStr& path, const std::function<void(CStream*)>& write);

// The current program of an instrument; false without one.
bool saveProgram(CSampler* sampler, const CStr& path); ///< .qvs
bool saveProgram(CEffect* rack, const CStr& path);     ///< .qve
bool saveProgram(CArp* arp, const CStr& path);         ///< .qva
/// One effect, as a chain of it alone; a .qve.
bool saveEffect(CFX* fx, const CStr& path);
/// The kit of a drum track, a .qvs too; false for other tracks.
bool saveKit(CTrack* track, const CStr& path);

/// The number in the block "filetype", 3 for a program of the sampler; -1 without that block.
int getFiletype(const CStr& path);

/// How many sounds a kit has; 0 for what is none.
int countKitSounds(const CStr& path);

/// Replaces the sounds in a layer of a drum track by those of a kit or a sliced loop, in one step.
/// A file without sounds for it, such as a program of the sampler, changes nothing. `track` is of
/// `seq`.
void loadPreset(CSeq* seq, CLayer* layer, CTrack* track, const CStr& path);
