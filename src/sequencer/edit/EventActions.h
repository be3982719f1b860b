#pragma once

#include "sequencer/edit/EventEdits.h"

#include <functional>
#include <memory>
#include <vector>

// What editors do to the selected notes and hits of one or several parts that stand on tracks, each
// as one step of all of them. Parts that share a content are changed once; parts on locked tracks
// and those where nothing changes stay out of it. Interface thread.

using PartList = std::vector<CPart*>;

struct PartDraft {
    CPart* part;
    std::unique_ptr<CPart> draft; ///< becomes its content
};
void applyDrafts(CSeq* seq, std::vector<PartDraft> drafts, const char* title);
/// `change(part, draft)` alters a copy of the content of each.
void changeParts(CSeq* seq, const PartList& parts, const char* title,
                 const std::function<void(CPart* part, CPart* draft)>& change);

/// How far all that is selected can go together.
EventRange eventRange(CSeq* seq, const PartList& parts);
bool anySelected(const PartList& parts);
/// As `dragEvents` and `copyEvents` of a single part do with notes.
void dragEvents(CSeq* seq, const PartList& parts, const EventDelta& delta);
void copyEvents(CSeq* seq, const PartList& parts, const EventDelta& delta);
/// "Delete", "Cut" and so on.
void deleteEvents(CSeq* seq, const PartList& parts, const char* title = "Delete");
/// "Mute notes", or "Unmute notes" where all that are selected are muted.
void muteEvents(CSeq* seq, const PartList& parts);
bool allMuted(const PartList& parts); ///< and some are selected
/// "Glue": of each row of a part the selected ones become one, from the first to the end of the
/// last.
void glueEvents(CSeq* seq, const PartList& parts);
/// "Split": those that are selected, in a part without any all, are cut where they last over a tick
/// of the song.
void splitEvents(CSeq* seq, const PartList& parts, int songTick);
/// "Quantize": starts of selected ones go to a grid of that many ticks.
void quantizeEvents(CSeq* seq, const PartList& parts, int grid);
