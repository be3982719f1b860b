#pragma once

#include "engine/Setting.h"

class CSound;

// What is set of the instruments and stored with them.

/// Of a sound: its level, its tuning, its zone, and the operators of a synthesizer sound; of a drum
/// what counts there and stands in a song. The effects of a sound and of a program have their own
/// (EffectSettings.h).
Settings settingsOf(const CSound& sound);
Settings clipSettings(const CSound& sound); ///< of the CSampleClip that it plays
Settings envelopeSettings();                ///< of a CEnv
Settings lfoSettings();                     ///< of a CLFO
/// Of a CMod of a sound: where it leads to and by how much, for each of its destinations. The
/// amount is a share of what is possible there, which for the pitch are four octaves.
Settings slotSettings(const CSound& sound);
/// Of a sound: the MIDI controller that moves each of its values, -1 none. Where several move one
/// the first counts, until another is set.
Settings controllerSettings(const CSound& sound);
Settings layerSettings();   ///< of a CLayer
Settings samplerSettings(); ///< of a CSampler
