#include "arrange/RowLayout.h"

#include "base/Numbers.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/TrackEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/FolderSum.h"
#include "sequencer/take/Takes.h"
#include "ui/EventRows.h"
#include "ui/NotePlace.h"

#include <algorithm>
#include <utility>

namespace {

struct Nesting {
    int depth = 0;
    bool hidden = false;
};

Nesting nestingOf(const CTrack* track) {
    Nesting n;
    for (const CTrack* f = track->folder; f && n.depth < mostFolderDepth; f = f->folder) {
        n.depth++;
        n.hidden = n.hidden || !f->open();
    }
    return n;
}

bool showsLanes(const CTrack* track) {
    return track->kind != trackFolder && track->open();
}

/// As many as the part with the most of them has.
int shownTakes(const CSongTrack* songTrack) {
    size_t most = 0;
    if (songTrack->track->takesShown)
        for (auto* part : songTrack->parts)
            if (const Takes* takes = takesOf(part)) most = std::max(most, takes->takes.size());
    return int(most);
}

constexpr int notesHeight = 168, mostNotesHeight = 400;
constexpr int mostKeyHeight = 12, spareKeys = 2; ///< above the highest and below the lowest

/// The lowest and the highest key of the parts, two octaves without any.
std::pair<int, int> keysOf(CSongTrack* songTrack) {
    constexpr int usualLow = 48, usualHigh = 72;
    int low = EventRows::keys, high = -1;
    for (auto* part : songTrack->parts)
        if (part->type == partMIDI)
            eachEvent(part->getEvents(), [&](CBaseEvent* e, int tick) {
                const NoteFacts facts = factsOf(part, e, tick);
                if (facts.length == 0) return;
                low = asMin(low, facts.row);
                high = asMax(high, facts.row);
            });
    return high < 0 ? std::pair(usualLow, usualHigh) : std::pair(low, high);
}

int notesHeightOf(CSongTrack* songTrack) {
    if (songTrack->track->kind != trackDrum) return notesHeight;
    int height = CTrack::leastRow;
    if (const CLayer* layer = songTrack->track->drumLayer()) {
        height = 0;
        for (const auto* sound : drumSounds(*layer)) height += sound->getHeight();
    }
    return asMinMax(height, int(CTrack::leastRow), mostNotesHeight);
}

} // namespace

void RowLayout::showNotes(const CTrack* track, bool on) {
    if (on)
        fits.try_emplace(track);
    else
        fits.erase(track);
}

void RowLayout::scrollKeys(const CTrack* track, int topKey) {
    const auto fit = fits.find(track);
    if (fit == fits.end() || fit->second.keyHeight <= 0) return;
    const int shown = notesHeight / fit->second.keyHeight;
    fit->second.topKey = asMinMax(topKey, shown - 1, EventRows::keys - 1);
    fit->second.byHand = true;
}

/// The row for the keys of all its parts, as high as they have room.
ArrangeRow RowLayout::notesRow(CSongTrack* songTrack) {
    const auto [low, high] = keysOf(songTrack);
    KeyFit& fit = fits[songTrack->track];
    const bool fitted = fit.byHand || (fit.keyHeight > 0 && high <= fit.topKey &&
                                       low > fit.topKey - notesHeight / fit.keyHeight);
    if (!fitted) {
        const int count = high - low + 1 + 2 * spareKeys;
        fit.keyHeight = asMinMax(notesHeight / count, int(EventRows::leastHeight), mostKeyHeight);
        const int shown = notesHeight / fit.keyHeight;
        fit.topKey = asMinMax((low + high + shown) / 2, shown - 1, EventRows::keys - 1);
    }
    ArrangeRow row{.songTrack = songTrack, .notes = true};
    row.topKey = fit.topKey;
    row.keyHeight = fit.keyHeight;
    return row;
}

void RowLayout::build(CSeq* seq) {
    rows.clear();
    if (!seq) return;
    int index = -1, top = 0;
    const auto add = [&](ArrangeRow row, int height) {
        row.top = top;
        row.height = height;
        top += height;
        rows.push_back(row);
    };
    for (auto* songTrack : seq->getProg()->tracks) {
        index++;
        const CTrack* track = songTrack->track;
        const Nesting nesting = nestingOf(track);
        if (nesting.hidden) continue;
        const bool flat =
            track->kind == trackFolder && !track->ownRowHeight() && !folderGroup(seq, track);
        add({.songTrack = songTrack, .track = index, .depth = nesting.depth},
            flat ? int(CTrack::leastRow) : track->getRowHeight());
        for (int take = 0; take < shownTakes(songTrack); take++)
            add({.songTrack = songTrack, .take = take, .track = index, .depth = nesting.depth},
                CTrack::leastRow);
        if (showsNotes(track)) {
            ArrangeRow notes = notesRow(songTrack);
            notes.track = index;
            notes.depth = nesting.depth;
            add(notes, notesHeightOf(songTrack));
        }
        if (!showsLanes(track)) continue;
        for (auto* lane : track->subTracks)
            if (lane->visible && lane->automation())
                add({.songTrack = songTrack, .lane = lane, .track = index, .depth = nesting.depth},
                    asMinMax(lane->height.load(), CTrack::leastRow, CTrack::mostRow));
    }
}

int RowLayout::total() const {
    return rows.empty() ? 0 : rows.back().bottom();
}

const ArrangeRow* RowLayout::at(int y) const {
    if (y < 0) return nullptr;
    const auto found = std::partition_point(rows.begin(), rows.end(),
                                            [y](const ArrangeRow& r) { return r.bottom() <= y; });
    return found == rows.end() ? nullptr : &*found;
}

const ArrangeRow* RowLayout::nearest(int y) const {
    if (rows.empty()) return nullptr;
    if (y < 0) return &rows.front();
    const ArrangeRow* row = at(y);
    return row ? row : &rows.back();
}

const ArrangeRow* RowLayout::of(const CSongTrack* songTrack) const {
    const auto found = std::find_if(rows.begin(), rows.end(), [songTrack](const ArrangeRow& r) {
        return r.songTrack == songTrack && r.ofTrack();
    });
    return found == rows.end() ? nullptr : &*found;
}
