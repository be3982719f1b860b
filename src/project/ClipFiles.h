#pragma once

class CPart;
class CSeq;
class CStr;
class CStream;

/// Writes a part of a song as a clip: its events, with the samples of audio, the kit of drums, or
/// the programs of the synthesizers that a track of notes feeds. What it plays of another part or
/// from a file comes into the clip as well, so that it needs nothing else to sound. Envelopes stay
/// out: they belong to lanes of the track. Interface thread.
void writeClipFile(CStream* stream, CSeq* seq, CPart* part);

/// The same into a file; false after a message, and what was there before stays.
bool saveClip(CSeq* seq, CPart* part, const CStr& path);
