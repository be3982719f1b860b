#include "arrange/RowLayout.h"

#include "base/Numbers.h"
#include "sequencer/CSeq.h"
#include "sequencer/CSubTrack.h"
#include "sequencer/Takes.h"

#include <algorithm>

namespace {

constexpr int mostDepth = 64; ///< of folders in folders, should a file hold a ring

struct Nesting {
    int depth = 0;
    bool hidden = false;
};

Nesting nestingOf(const CTrack* track) {
    Nesting n;
    for (const CTrack* f = track->folder; f && n.depth < mostDepth; f = f->folder) {
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
        for (auto* part : each<CPart>(songTrack->parts))
            if (const Takes* takes = takesOf(part)) most = std::max(most, takes->takes.size());
    return int(most);
}

} // namespace

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
    for (auto* songTrack : each<CSongTrack>(seq->getProg()->tracks)) {
        index++;
        const CTrack* track = songTrack->track;
        const Nesting nesting = nestingOf(track);
        if (nesting.hidden) continue;
        const bool flat = track->kind == trackFolder && !track->ownRowHeight();
        add({songTrack, nullptr, -1, index, nesting.depth},
            flat ? int(CTrack::leastRow) : track->getRowHeight());
        for (int take = 0; take < shownTakes(songTrack); take++)
            add({songTrack, nullptr, take, index, nesting.depth}, CTrack::leastRow);
        if (!showsLanes(track)) continue;
        for (auto* lane : each<CSubTrack>(track->subTracks))
            if (lane->visible && lane->automation())
                add({songTrack, lane, -1, index, nesting.depth},
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
