#include "sequencer/song/SampleUse.h"

#include "audiofiles/CSample.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/ForgetHooks.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <functional>
#include <unordered_set>

namespace {

/// Walks whatever may hold audio parts, and shows the events in them.
class EventWalk {
public:
    explicit EventWalk(std::function<void(CAudioEvent*)> call) : show(std::move(call)) {}

    void visit(CObject* object) {
        if (object->category == categoryPart && object->type == partAudio)
            visitPart(static_cast<CPart*>(object));
        else if (auto* songTrack = dynamic_cast<CSongTrack*>(object))
            visitAll(songTrack->parts);
        else if (auto* prog = dynamic_cast<CSeqProg*>(object))
            visitAll(prog->tracks);
        else if (auto* seq = dynamic_cast<CSeq*>(object))
            for (const auto& list :
                 viewsOf<CObject>(seq->progs, seq->masterParts, seq->clipboard.parts))
                visitAll(list);
    }

private:
    void visitAll(ListView<CObject> list) {
        for (auto* object : list) visit(object);
    }

    void visitPart(CPart* part) {
        for (CBaseEvent* e = part->events; e; e = e->next) show(asClip(e));
    }

    std::function<void(CAudioEvent*)> show;
};

} // namespace

void forgetSamples(CQV* host, const ForgetSet& gone) {
    const auto isSample = [](CObject* object) { return dynamic_cast<CSample*>(object) != nullptr; };
    if (std::ranges::none_of(gone.all(), isSample)) return;
    std::vector<CAudioEvent*> found;
    EventWalk walk([&](CAudioEvent* event) {
        if (gone.has(event->sample)) found.push_back(event);
    });
    for (auto* c : host->comps) walk.visit(c);
    host->eachHeld([&walk](CObject* held) { walk.visit(held); });
    const GraphHold hold(host);
    for (CAudioEvent* event : found) event->sample = nullptr;
}

std::vector<CSample*> unusedSamples(CQV* host) {
    std::unordered_set<const CSample*> used;
    EventWalk walk([&used](const CAudioEvent* event) { used.insert(event->sample); });
    for (auto* c : host->comps) walk.visit(c);
    std::vector<CSample*> unused;
    for (auto* sample : host->samples)
        if (!used.contains(sample) && !sample->takePending) unused.push_back(sample);
    return unused;
}

int removeUnusedSamples(CQV* host) {
    const std::vector<CSample*> unused = unusedSamples(host);
    if (unused.empty()) return 0;
    CUndo* step = host->undoStart("Remove unused", host, {.host = HostNotice::pool});
    for (CSample* sample : unused) step->asRemove(sample, &host->samples);
    host->undoEnd(step, true);
    return int(unused.size());
}
