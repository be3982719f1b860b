#pragma once

#include "base/Atomic.h"
#include "base/CList.h"
#include "base/CObject.h"
#include "base/Stored.h"

class CSound;
class CSynthProg;

/// A group of sounds within a program; at a note all of them are asked alike.
class CLayer : public CObject {
public:
    CSynthProg* prog;                 ///< owner
    ListOf<CSound> sounds;            ///< owned
    Shared<CSound*> sound{nullptr};   ///< the one that the editor shows
    Stored<unsigned char> editAll{0}; ///< 1: a change in the panel goes to every sound

    explicit CLayer(CSynthProg* owner);
    ~CLayer() override;
    CLayer(const CLayer&) = delete;
    CLayer& operator=(const CLayer&) = delete;

    /// Whether a drum track leaves this sound out: muted, or another one is alone.
    bool soundMuted(CSound* s);
    /// Appends a sound, owned from now on, and makes it the current one.
    void addSound(CSound* s);
};
