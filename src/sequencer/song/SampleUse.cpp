#include "sequencer/song/SampleUse.h"

#include "audiofiles/CSample.h"
#include "engine/CQV.h"
#include "engine/ForgetHooks.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>

namespace {

/// Walks whatever may hold audio parts, and finds the events of samples that go.
class SampleSearch {
public:
    explicit SampleSearch(const ForgetSet& samples) : gone(samples) {}
    std::vector<CAudioEvent*> found;

    void visit(CObject* object) {
        if (object->category == categoryPart && object->type == partAudio)
            visitPart(static_cast<CPart*>(object));
        else if (auto* songTrack = dynamic_cast<CSongTrack*>(object))
            visitAll(songTrack->parts);
        else if (auto* prog = dynamic_cast<CSeqProg*>(object))
            visitAll(prog->tracks);
        else if (auto* seq = dynamic_cast<CSeq*>(object))
            for (const CList* list : {&seq->progs, &seq->masterParts, &seq->clipboard.parts})
                visitAll(*list);
    }

private:
    void visitAll(const CList& list) {
        for (auto* object : each<CObject>(list)) visit(object);
    }

    void visitPart(CPart* part) {
        for (CBaseEvent* e = part->events; e; e = e->next)
            if (auto* event = static_cast<CAudioEvent*>(e); gone.has(event->sample))
                found.push_back(event);
    }

    const ForgetSet& gone;
};

} // namespace

void forgetSamples(CQV* host, const ForgetSet& gone) {
    const auto isSample = [](CObject* object) { return dynamic_cast<CSample*>(object) != nullptr; };
    if (std::ranges::none_of(gone.all(), isSample)) return;
    SampleSearch search(gone);
    for (auto* c : each<CComp>(host->comps)) search.visit(c);
    host->eachHeld([&search](CObject* held) { search.visit(held); });
    const GraphHold hold(host);
    for (CAudioEvent* event : search.found) event->sample = nullptr;
}
