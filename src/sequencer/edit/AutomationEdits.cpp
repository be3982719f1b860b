#include "sequencer/edit/AutomationEdits.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/SongPlayback.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// Drafts for the contents of parts, which one step swaps in.
class Drafts {
public:
    explicit Drafts(CSeq* song) : seq(song) {}

    /// The draft for what a part shows; null on a locked track.
    CPart* of(CPart* part) {
        if (seq->isLocked(part)) return nullptr;
        CPart* content = part->content();
        for (Made& m : made)
            if (m.content == content) return m.draft.get();
        made.push_back({content, contentDraft(part)});
        return made.back().draft.get();
    }
    void record(const char* title) {
        CUndo* undo = seq->host->undoStart(title, seq, {.song = true, .seq = SeqNotice::parts});
        for (Made& m : made)
            if (!sameContent(m.draft.get(), m.content))
                swapUndoPart(undo, m.content, m.draft.release());
        seq->host->undoEnd(undo, true); // what is told next is how it is then
    }

private:
    struct Made {
        CPart* content;
        std::unique_ptr<CPart> draft;
    };
    CSeq* seq;
    std::vector<Made> made;
};

template <class F>
void edit(CSeq* seq, const std::vector<PartSlot>& places, const char* title, F&& change) {
    Drafts drafts(seq);
    std::vector<std::pair<CPart*, int>> done; // ghosts show the same
    for (const PartSlot& place : places) {
        const std::pair content{place.part->content(), place.slot};
        CPart* draft = drafts.of(place.part);
        if (!draft || std::ranges::find(done, content) != done.end()) continue;
        done.push_back(content);
        change(place, draft);
    }
    drafts.record(title);
}

float shareOn(const LanePlace& from, const LanePlace& to, int tick) {
    const double part = (double(tick) - from.tick) / asMax(1, to.tick - from.tick);
    return float(double(from.value) + (double(to.value) - double(from.value)) * part);
}

} // namespace

EventRange pointRange(CSeq* seq, const std::vector<PartSlot>& places) {
    EventRange all;
    all.minTicks = -maxTicks;
    all.maxTicks = maxTicks;
    for (const PartSlot& place : places) {
        const EventRange one = eventRange(seq, place.part, {laneAutomation, place.slot});
        all.minTicks = asMax(all.minTicks, one.minTicks);
        all.maxTicks = asMin(all.maxTicks, one.maxTicks);
    }
    return all;
}

void changePoints(CSeq* seq, const std::vector<PartSlot>& places, const EventDelta& delta) {
    const EventRange range = pointRange(seq, places);
    EventDelta kept = delta;
    kept.ticks = asMinMax(delta.ticks, range.minTicks, range.maxTicks);
    edit(seq, places, delta.ticks ? "Move" : "Edit", [&](const PartSlot& place, CPart* draft) {
        changeEvents(seq, place.part, draft, {laneAutomation, place.slot}, kept);
    });
}

void setPoints(CSeq* seq, const std::vector<PartSlot>& places, float value) {
    edit(seq, places, "Edit", [&](const PartSlot& place, CPart* draft) {
        eachEvent(draft->getParam(place.slot), [&](CEnvEvent* e, int) {
            if (isSelected(e)) e->value = fLimit(value, 0.0f, 1.0f);
        });
    });
}

void bendPoints(CSeq* seq, const std::vector<PartSlot>& places, float amount) {
    edit(seq, places, "Edit curve", [&](const PartSlot& place, CPart* draft) {
        bendPoints(draft, place.slot, amount, false);
    });
}

void drawPoints(CSeq* seq, const std::vector<PartSlot>& places,
                const std::vector<LanePlace>& line) {
    std::vector<LaneLine> lines;
    for (const PartSlot& place : places) lines.push_back({place, line});
    drawPoints(seq, lines, "Draw");
}

void drawPoints(CSeq* seq, const std::vector<LaneLine>& lines, const char* title) {
    std::vector<PartSlot> places;
    for (const LaneLine& one : lines) places.push_back(one.place);
    edit(seq, places, title, [&](const PartSlot& place, CPart* draft) {
        drawPoints(draft, place, seq->getTicks(place.part),
                   lines[size_t(&place - places.data())].line);
    });
}

void drawPoints(CPart* draft, const PartSlot& place, int ticks,
                const std::vector<LanePlace>& line) {
    if (line.empty()) return;
    const int start = place.part->pos, origin = saturate(int64_t(start) + place.part->offset);
    const int from = asMax(line.front().tick, start);
    const int to = asMin(line.back().tick, saturate(int64_t(start) + ticks));
    if (from > to) return;
    EventCollector all;
    takePoints(draft, place.slot, all);
    CBaseEvent* list = all.takeList();
    const auto put = [&](const LanePlace& at) {
        CEnvEvent* point = createEnvEvent(nullptr, at.value);
        point->curve = at.curve;
        point->shape = at.shape;
        all.add(at.tick - origin, point);
    };
    for (int tick = 0; CBaseEvent* e = list;) {
        list = e->next;
        const int at = (tick += e->delta) + origin;
        if (at >= from && at <= to)
            freeEvent(e);
        else
            all.add(tick, e);
    }
    for (size_t i = 0; i < line.size(); i++) {
        if (i > 0 && line[i - 1].tick < from && line[i].tick > from)
            put({from, shareOn(line[i - 1], line[i], from)});
        if (line[i].tick >= from && line[i].tick <= to) put(line[i]);
        if (i + 1 < line.size() && line[i].tick < to && line[i + 1].tick > to)
            put({to, shareOn(line[i], line[i + 1], to)});
    }
    draft->setParam(place.slot, asLanePoint(all.takeList()));
}

std::vector<LanePlace> thinned(const std::vector<LanePlace>& line, float reach) {
    std::vector<LanePlace> kept;
    for (size_t i = 0; i < line.size();) {
        kept.push_back(line[i]);
        size_t next = i + 1;
        // As far as all between lies on the way.
        for (size_t to = i + 2; to < line.size(); to++) {
            bool straight = true;
            for (size_t k = i + 1; k < to && straight; k++)
                straight =
                    std::fabs(line[k].value - shareOn(line[i], line[to], line[k].tick)) <= reach;
            if (!straight) break;
            next = to;
        }
        i = next;
    }
    return kept;
}

float pointValueAt(CPart* part, int slot, int tick, float none) {
    const CEnvEvent* before = nullptr;
    int at = 0;
    for (CEnvEvent* e = part->getParam(slot); e; e = asLanePoint(e->next)) {
        const int from = at;
        at += e->delta;
        if (at >= tick)
            return before ? getPoint(e->shape, before->value, e->value,
                                     float(double(tick - from) / asMax(1, e->delta)), e->curve)
                          : e->value;
        before = e;
    }
    return before ? before->value : none;
}
