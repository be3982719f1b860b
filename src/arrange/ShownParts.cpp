#include "arrange/ShownParts.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "arrange/LanePress.h"
#include "arrange/TakeRows.h"
#include "arrange/TrackNotes.h"
#include "sequencer/song/CSeq.h"

namespace {

constexpr int pointReach = 6;      ///< pixels around a point
constexpr size_t mostNotes = 2000; ///< of a row

void addPoints(const ArrangeState& state, const ArrangeRow& row, CRect view,
               std::vector<ShownPart>& found) {
    for (const LanePoint& p : pointsOf(state, row)) {
        const int x = state.axis().xOf(p.tick);
        const int y = laneOf(state, row, p.part).yOf(double(p.point->value));
        const CRect box = asRect(x - pointReach, y - pointReach, x + pointReach, y + pointReach);
        if (!intersect(box, view).empty())
            found.push_back({row.songTrack, p.part, box, p, nullptr});
    }
}

void addTakes(const ArrangeState& state, const ArrangeRow& row, CRect view,
              std::vector<ShownPart>& found) {
    for (auto* part : row.songTrack->parts) {
        const TakeSpan span = takeSpan(state, row, part);
        CRect box = rowBox(state, row);
        box.left = state.axis().xOf(span.from);
        box.right = state.axis().xOf(span.to);
        if (!span.empty() && !intersect(box, view).empty())
            found.push_back({row.songTrack, part, box, {}, &row});
    }
}

void addNotes(const ArrangeState& state, const ArrangeRow& row, CRect view,
              std::vector<ShownPart>& found) {
    size_t room = mostNotes;
    for (auto* part : row.songTrack->parts) {
        const CRect within = intersect(notesBox(state, row, part), view);
        if (part->type == partAudio || within.empty()) continue;
        const NotePlace place = notesOf(state, row, part);
        place.eachNear(*place.events, state.axis(), within, [&](const EventIndex::Entry& e) {
            const CRect box =
                place.boxOf(state.axis(), state.edit.scrollY, factsOf(part, e.event, e.tick));
            if (room == 0 || intersect(box, within).empty()) return;
            room--;
            found.push_back({row.songTrack, part, box, {}, nullptr, &row, e.event, e.tick});
        });
    }
}

} // namespace

bool ShownPart::selected() const {
    if (event) return isSelected(event);
    if (takeRow) return playsTake(part, takeRow->take);
    return point.point ? isSelected(point.point) : part->selected();
}

std::vector<ShownPart> partsInView(const ArrangeState& state) {
    std::vector<ShownPart> found;
    const CRect view = asRect(0, 0, state.gridWidth(), state.gridHeight());
    for (const ArrangeRow& row : state.rows.all()) {
        if (intersect(rowBox(state, row), view).empty()) continue;
        if (row.notes) {
            addNotes(state, row, view, found);
            continue;
        }
        if (row.take >= 0) {
            addTakes(state, row, view, found);
            continue;
        }
        if (row.lane) {
            addPoints(state, row, view, found);
            continue;
        }
        for (auto* part : row.songTrack->parts) {
            const CRect box = partBox(state, row, part);
            if (box.left >= view.right) break;
            if (box.right > view.left) found.push_back({row.songTrack, part, box, {}, nullptr});
        }
    }
    return found;
}
