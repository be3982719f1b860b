#include "sequencer/SampleUse.h"

#include "audiofiles/CSample.h"
#include "engine/CQV.h"
#include "sequencer/CSeq.h"

namespace {

/// Walks whatever may hold audio parts, and takes the sample out of their events.
class SampleRemoval {
public:
    explicit SampleRemoval(const CSample* gone) : sample(gone) {}

    void visit(CObject* object) const {
        if (object->category == categoryPart && object->type == partAudio)
            visitPart(static_cast<CPart*>(object));
        else if (auto* songTrack = dynamic_cast<CSongTrack*>(object))
            visitAll(songTrack->parts);
        else if (auto* prog = dynamic_cast<CSeqProg*>(object))
            visitAll(prog->tracks);
        else if (auto* seq = dynamic_cast<CSeq*>(object))
            for (const CList* list : {&seq->progs, &seq->masterParts, &seq->copies})
                visitAll(*list);
    }

private:
    void visitAll(const CList& list) const {
        for (auto* object : each<CObject>(list)) visit(object);
    }

    void visitPart(CPart* part) const {
        for (CBaseEvent* e = part->events; e; e = e->next)
            if (auto* event = static_cast<CAudioEvent*>(e); event->sample == sample)
                event->sample = nullptr;
    }

    const CSample* sample;
};

} // namespace

void forgetSample(CQV* host, CObject* object) {
    const auto* sample = dynamic_cast<CSample*>(object);
    if (!sample) return;
    const SampleRemoval removal(sample);
    for (auto* c : each<CComp>(host->comps)) removal.visit(c);
    host->eachHeld([&removal](CObject* held) { removal.visit(held); });
}
