#pragma once

#include "common/fx/CFX.h"

/// `CObject::category` of the effects of a rack and of its programs.
constexpr int categoryEffect = 64;
constexpr int categoryEffectProg = 128;

constexpr int effectKindCount = fxGate + 1;

/// Of a kind that this program can make. Other kinds come from files: each is a plain `CFX`, which
/// a chain passes over.
constexpr bool isEffectKind(int kind) {
    return kind >= 0 && kind < effectKindCount;
}

/// A new effect, off, with the settings of its class; a plain one with that `type` for another
/// kind. Owned by the caller. `hz` frames a second, blocks of `frames`. Interface thread.
CFX* makeEffect(int kind, float hz, int frames);

/// What the user knows a kind as.
CStr effectName(int kind);

/// As `makeEffect`, for use in a chain: on, with the gains that a new program gives it.
CFX* makeNewEffect(int kind, float hz, int frames);
