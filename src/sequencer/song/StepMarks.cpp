#include "sequencer/song/StepMarks.h"

#include "engine/UndoPlan.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <unordered_map>

namespace {

/// What is asked of playback for the objects that a step changes where they stand.
using Requests = std::unordered_map<const CObject*, unsigned>;

Requests requestsOf(const UndoPlan& plan, const CUndo* step) {
    Requests requests;
    for (const CUndoContent* content : plan.swaps()) requests[content] |= requestLanes;
    for (const auto* item : step->items)
        if (item->number || item->toggled) requests[item->object] |= requestSetup | requestFlush;
    return requests;
}

} // namespace

void StepMarks::collect(CSeq* seq, const UndoPlan& plan, const CUndo* step) {
    std::unordered_map<const CList*, Mark> byList;
    const auto know = [&byList](CSongTrack* t) { byList[&t->parts].songTrack = t; };
    seq->eachSongTrack(know);
    for (const CUndoItem* item : plan.rest())
        for (const auto* prog : seq->programs())
            if (item->touches(&prog->tracks)) know(static_cast<CSongTrack*>(item->object));
    const auto markOf = [&byList](const CList* list) {
        const auto found = byList.find(list);
        return found == byList.end() ? nullptr : &found->second;
    };
    for (const UndoPlan::Move& move : plan.moves()) {
        if (Mark* mark = markOf(move.from)) {
            mark->requests |= requestSetup | requestFlush;
            mark->parts.push_back(static_cast<CPart*>(move.object));
        }
        if (Mark* mark = markOf(move.to)) {
            mark->requests |= requestSetup;
            mark->coming++;
        }
    }
    const Requests requests = requestsOf(plan, step);
    const auto requestsFor = [&requests](const CObject* object) {
        const auto found = requests.find(object);
        return found == requests.end() ? 0u : found->second;
    };
    if (!requests.empty())
        seq->eachSongTrack([&](CSongTrack* t) {
            Mark* mark = markOf(&t->parts);
            for (auto* part : t->parts) {
                const unsigned asked = requestsFor(part) | requestsFor(part->content());
                mark->requests |= asked;
                if (asked & requestLanes) mark->parts.push_back(part);
            }
        });
    marks.clear();
    for (auto& [list, mark] : byList) {
        if (!mark.requests) continue;
        std::ranges::sort(mark.parts);
        if (mark.coming > 0) mark.room = PartIndex::roomFor(list->getCount() + mark.coming);
        marks.push_back(std::move(mark));
    }
}

bool StepMarks::Mark::touches(const CPart* part) const {
    return part && std::ranges::binary_search(parts, part, std::less<const CPart*>());
}

void StepMarks::serve() {
    for (Mark& mark : marks) {
        for (CPart* part : mark.parts) part->dropPlay();
        if (AudioVoices* voices = mark.songTrack->voices.get())
            for (const AudioVoice& v : voices->voices)
                if (v.active && mark.touches(v.part)) voices->forgetEvents(v.part);
        mark.songTrack->index.takeRoom(mark.room);
        mark.songTrack->index.expire();
        mark.songTrack->requests.ask(mark.requests);
    }
}
