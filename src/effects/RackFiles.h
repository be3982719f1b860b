#pragma once

#include "base/CList.h"
#include "base/CStr.h"
#include "engine/Macros.h"

#include <cstdint>

class CEffectProg;
class CFX;
class CStream;

// The blocks in which a rack and its programs are stored: a name, a size and a body each, as in all
// files of this system. Interface thread.

/// Block "prog", and behind it those of the effects of its chain.
void writeEffectProg(CStream* stream, const CEffectProg& prog);

/// What the blocks of a rack hold, complete before anything of it is used.
class RackContent {
public:
    static constexpr int mostProgs = 1024; ///< against files made of heads only, as those below
    static constexpr int mostInChain = 64, mostEffects = 1024;

    ListOf<CEffectProg> progs; ///< owned until somebody takes them
    int progIndex = 0;         ///< as stored
    MacroNumbers macros = noMacros();
    MacroLooks looks;

    /// Effects are made for `hz` frames a second and blocks of `frames`.
    RackContent(float hz, int frames) : rate(hz), blockFrames(frames) {}
    ~RackContent();
    RackContent(const RackContent&) = delete;
    RackContent& operator=(const RackContent&) = delete;

    /// Adds what stands in `stream` up to position `end`, and goes there. Settings beyond their
    /// range are clamped; those that are not finite or that the bytes do not reach keep the
    /// default; unknown blocks are skipped. Ends at a block that does not fit.
    void read(CStream* stream, int64_t end);

private:
    float rate;
    int blockFrames;
    int effectCount = 0;
    CEffectProg* prog = nullptr; ///< that effects are read into, as long as there is room
    CFX* last = nullptr;         ///< effect, which the small blocks behind it complete

    void readBlock(const CStr& name, CStream& body);
    void readProg(CStream& body);
    void readEffect(CStream& body);
};
