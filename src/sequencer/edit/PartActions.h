#pragma once

class CSeq;

/// Edits of the selected parts of the current program, but for those on locked tracks; each one
/// step of the history. Those of whole files of their own are in Quantize.h, PartMerge.h,
/// PartClipboard.h, BarEdits.h. Interface thread.

/// One step of that title: the selected parts leave.
void removeSelected(CSeq* seq, const char* title);
/// "Duplicate": copies of the selected parts follow right behind all of them, and are selected in
/// their place. Ghosts give ghosts.
void duplicateParts(CSeq* seq);
/// "Mute part": mutes the selected parts, or lets all be heard when all are mute.
void toggleMutes(CSeq* seq);
/// "Un-ghost": selected ghosts get a copy of what they show as their own.
void unghostParts(CSeq* seq);
