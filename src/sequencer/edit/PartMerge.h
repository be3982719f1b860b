#pragma once

class CPart;
class CSeq;

/// Joining parts. Interface thread.

/// Copies into `to`, which is not linked, the events and points of `from` that lie within it,
/// `offset` ticks from the start of `from` on. Notes end with `to` at the latest, and behind those
/// of a tick come those of `from`; an audio part with a second clip holds several from then on.
void mergeEvents(CSeq* seq, CPart* to, CPart* from, int offset);
/// One step, "Glue": on every track on which several parts are selected, one part comes in place of
/// them. It lasts from the start of the first to the end of the last, has name, colour and mute of
/// the first, is no ghost, and is selected. What the parts show is in it, and nothing of what their
/// edges hide; a note ends where its part did. Parts whose rows repeat too much to be written out
/// stay as they are, with all others of their track.
void glueParts(CSeq* seq);
