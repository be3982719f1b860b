#pragma once

class CSeq;
class ForgetSet;
struct PartRange;

/// The song's clipboard, `CSeq::clipboard`; see also `CSeq::copyToClipboard` and `CSeq::pasteData`.
/// Interface thread.

/// The selected parts of the current program come into the clipboard, in place of what was there;
/// it stays as it is without any.
void copyParts(CSeq* seq);
/// The same, but of a part of a single clip that is the one of the range only that.
void copyPartRange(CSeq* seq, const PartRange& range);
/// The same, and one step, "Cut", that takes them out.
void cutParts(CSeq* seq);
/// One step, "Paste", at the position: into the part that is edited if a single copy goes with it
/// and that part spans the position, else as parts of their own, which are selected from then on.
/// They return to the tracks they came from, or, where a track is selected but none of those, as
/// many tracks further on as the first selected one is; each to the first unlocked track from there
/// on that takes its class, and where there is none it is left out.
void pasteParts(CSeq* seq);
/// Masters are about to be freed: copies that are ghosts of one take over its content.
void releaseCopies(CSeq* seq, const ForgetSet& masters);
