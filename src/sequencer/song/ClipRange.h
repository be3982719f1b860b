#pragma once

class CSeq;
struct CAudioEvent;

/// How long a clip lasts on the timeline: at its own speed that follows from the range of its
/// sample that it plays, in the modes that follow the tempo these are its ticks. The clip has a
/// sample; `songTick` is where it begins. Interface thread; clips in the hands of playback are not
/// to be changed.

int frameCount(const CAudioEvent* clip); ///< of its range
/// Frames of the sample that are heard in a second.
int clipRate(const CAudioEvent* clip);
/// Frames of its range that pass between two ticks of the song; below 0 where `to` lies before
/// `from`.
int framesBetween(CSeq* seq, const CAudioEvent* clip, int from, int to);

/// The clip lasts so many ticks, at least 1, as far as it has frames; its start stays.
void setClipTicks(CSeq* seq, CAudioEvent* clip, int songTick, int ticks);
/// It begins `delta` ticks later, as far as it has frames, and ends where it did: in the modes that
/// follow the tempo it is played slower or faster for that.
void trimClip(CSeq* seq, CAudioEvent* clip, int songTick, int delta);
/// The most ticks that it can last.
int longestClip(CSeq* seq, const CAudioEvent* clip, int songTick);
/// The most ticks, up to `limit`, by which it can begin earlier.
int ticksBefore(CSeq* seq, const CAudioEvent* clip, int songTick, int limit);
/// The frame that is heard `into` ticks behind its start, counted forward from the front of its
/// range also in a reversed one.
int frameInClip(CSeq* seq, const CAudioEvent* clip, int songTick, int into);
