#include "arrange/PartSketch.h"

#include "engine/MidiBytes.h"
#include "sequencer/song/CPart.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/take/Takes.h"

#include <algorithm>

namespace {

PartSketch sketch(int type, const CBaseEvent* list) {
    PartSketch s;
    int tick = 0;
    for (const CBaseEvent* e = list; e; e = e->next) {
        tick += e->delta;
        if (type == partMIDI) {
            const auto* note = asMessage(e);
            if (noteOn(note->data))
                s.marks.push_back(
                    {tick, note->length, asByte1(note->data), note->style.muted != 0});
        } else if (type == partDrum) {
            const auto* hit = asHit(e);
            s.marks.push_back({tick, 0, hit->sound, hit->style.muted != 0});
        }
    }
    if (s.marks.empty()) return s;
    s.lowest = s.highest = s.marks.front().row;
    for (const PartSketch::Mark& m : s.marks) {
        s.lowest = std::min(s.lowest, m.row);
        s.highest = std::max(s.highest, m.row);
        s.longest = std::max(s.longest, m.length);
    }
    return s;
}

} // namespace

const PartSketch& PartSketches::of(CPart* part) {
    CPart* content = part->content();
    std::unique_ptr<const PartSketch>& known = made[content];
    if (!known)
        known = std::make_unique<const PartSketch>(sketch(content->type, content->getEvents()));
    return *known;
}

const PartSketch& PartSketches::of(const TakeNotes& take) {
    std::unique_ptr<const PartSketch>& known = made[&take];
    if (!known) known = std::make_unique<const PartSketch>(sketch(take.type, take.list));
    return *known;
}
