#pragma once

#include "base/CList.h"

class CSampleClip;
class CSound;
class CStream;
class CSynthProg;

// The blocks in which a sampler, its programs and their clips are stored: a name, a size and a body
// each, as in all files of this system. Interface thread.

constexpr int filetypeSampler = 3;

/// Block "smp": a clip with its frames as they lie in memory.
void writeClip(CStream* stream, const CSampleClip* clip);
/// Block "filetype".
void writeFiletype(CStream* stream);
/// Blocks "prog" to "layeri" of one program. A sample sound names its clips by their place in
/// `clips`.
void writeProgram(CStream* stream, CSynthProg* prog, const CList& clips);
/// Block "sound" alone: a song keeps no more of a drum.
void writeSoundBlock(CStream* stream, const CSound& sound, const CList& clips);
/// Blocks "sound" and "soundmod", which is what a kit keeps of a drum.
void writeDrum(CStream* stream, const CSound& sound, const CList& clips);
/// Blocks "sound", "soundmod" and "soundfx".
void writeSound(CStream* stream, CSound* sound, const CList& clips);
