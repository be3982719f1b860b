#pragma once

/// The three guitar amplifiers behind `CGuitarAmp`, as plain functions on an opaque handle.
///
/// Each is a chain of gain stages, a tone stack and a loudspeaker cabinet, the same for both sides,
/// which share nothing but the parameters. `Overloud_process` belongs to the audio thread and
/// allocates nothing; parameters may be set and read by any thread at any time and glide to their
/// values; the others belong to the owner while nobody processes.

enum AmpType { ampClean, ampCrunch, ampDirty, ampTypes };

/// Parameters of each type by index, all from 0 to 1.
enum AmpCleanParameter { cleanBass, cleanMid, cleanTreble, cleanVolume };
enum AmpCrunchParameter { crunchDrive, crunchBass, crunchTreble, crunchTopCut, crunchVolume };
enum AmpDirtyParameter { dirtyDrive, dirtyBass, dirtyMid, dirtyTreble, dirtyPresence, dirtyVolume };

/// Frames by which every amplifier is late, at any rate.
constexpr int ampLatency = 23;

/// A new amplifier of an `AmpType` at 44,100 Hz with default parameters, which the caller owns and
/// gives to `Overloud_destroy`. Null for another type.
void* Overloud_create(int type);
/// Null is let through, here and in the calls below.
void Overloud_destroy(void* amp);
/// `frames` samples of 1 or 2 `channels`; the output may be the input and is overwritten. Any cut
/// of a signal into blocks gives the same, `ampLatency` frames late. Input that is not finite
/// counts as silence; the output is finite always.
void Overloud_process(void* amp, const float** in, float** out, int channels, int frames);
/// Frames a second, kept within 8,000 to 768,000; forgets the past. May allocate.
void Overloud_setfrequency(void* amp, float hz);
/// Clamped to 0..1; a value that is not finite and an index that the type lacks do nothing.
void Overloud_setparameter(void* amp, int index, float value);
/// 0 for an index that the type lacks.
float Overloud_getparameter(void* amp, int index);
/// Whether nothing is left of the past and no parameter on its way: silence stays silence.
bool Overloud_rests(const void* amp);
/// Forgets the past; parameters stay and hold at once.
void Overloud_reset(void* amp);
