#pragma once

#include <cstdint>

class CPart;
class CQV;
class CSample;
class CSeq;
struct CAudioEvent;

/// How long clips last, and which of their frames stand where. Any thread that reads the song; of
/// events in the hands of playback the graph holder.

/// Frames of a sample that pass in a second when it is tuned by so many semitones; at least 1.
int tunedRate(const CSample* sample, double semitones);

/// The event whose sample rules the length of a part, null when ticks do.
const CAudioEvent* lengthEvent(CPart* part);
/// The same if the part showed the events of `content`.
const CAudioEvent* lengthEvent(const CPart* part, const CPart* content);
/// Ticks that a part lasts at most, whatever the tempo and whether or not its sample is there.
int64_t longestTicks(CPart* part);

/// Ticks that the range of a clip lasts when it begins at `tick`: at the host's tempo, or by the
/// song's tempo points. In the modes that follow the tempo these are its `ticks`. 0 without a
/// sample.
int sampleAsTicks(CQV* host, const CAudioEvent* event);
int sampleAsTicks2(CSeq* seq, const CAudioEvent* event, int tick);

/// The frame of the sample that is heard `ticks` into a clip that lasts `total` ticks, counted from
/// the front of its range also in a reversed one: by shares of the range.
int posAsFrames2(const CAudioEvent* event, int ticks, int total);
/// The same by the clip's mode: in the modes that follow the tempo by shares, else at `tempo` beats
/// a minute.
int posAsFrames3(const CAudioEvent* event, int ticks, int total, float tempo);

/// The frames of the first clip of an audio part that lie between two ticks of the part, in the
/// order of the sample, cut to its range. False without a clip.
bool getAudioSelection(CSeq* seq, CPart* part, int fromTick, int toTick, int& from, int& to);
