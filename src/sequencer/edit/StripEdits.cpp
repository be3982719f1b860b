#include "sequencer/edit/StripEdits.h"

#include "engine/CFreezeItem.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "engine/EditorHooks.h"
#include "engine/KeyInput.h"
#include "engine/ObjectKinds.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TrackInstrument.h"

#include <algorithm>
#include <set>

namespace {

const StepEffects rewired = {.graph = true};

bool takesStrips(const CComp* c) {
    return c->type == compAudioOut || c->type == compGroupCh || c->type == compEffect;
}

/// The component that a strip is the sound of: of a track's, the track is no component of the
/// graph.
bool feeds(CQV* host, const CComp* from, const CComp* to, std::set<const CComp*>& seen) {
    if (from == to) return true;
    if (!seen.insert(from).second) return false;
    for (auto* next : host->comps)
        for (auto* ch : from->outputs)
            if (fedBy(next, ch) && feeds(host, next, to, seen)) return true;
    return false;
}

bool has(const std::vector<CComp*>& comps, const CComp* c) {
    return std::ranges::find(comps, c) != comps.end();
}

bool unfreeze(CQV* host, const std::vector<CComp*>& gone, CUndo* step) {
    const auto uses = [&gone](const CSongTrack* track) {
        for (const auto* item : track->freezeItems)
            if (has(gone, item->comp)) return true;
        return false;
    };
    bool any = false;
    for (auto* comp : host->comps) {
        auto* seq = compAs<CSeq>(comp);
        if (!seq || has(gone, comp)) continue;
        for (auto* prog : seq->programs())
            for (auto* track : prog->tracks) {
                if (!uses(track)) continue;
                for (auto* item : track->freezeItems) step->asRemove(item, &track->freezeItems);
                any = true;
            }
    }
    return any;
}

/// Each cable once, though it may have both ends there.
void removeCables(CQV* host, const std::vector<CComp*>& gone, CUndo* step) {
    const auto strip = [&](CComp* to) {
        const auto ends = [&](const auto* cable, const auto* fromIO) {
            return has(gone, cable->fromComp) || has(gone, cable->toComp) ||
                   (fromIO && has(gone, fromIO->comp));
        };
        for (auto* cable : to->midiCables)
            if (ends(cable, cable->fromPort)) step->asRemove(cable, &to->midiCables);
        for (auto* cable : to->audioCables)
            if (ends(cable, cable->fromChannel)) step->asRemove(cable, &to->audioCables);
    };
    for (const auto* list : listsOf(host->comps, host->sends))
        for (auto* c : *list) {
            strip(c);
            if (auto* seq = compAs<CSeq>(c))
                for (auto* track : seq->tracks) strip(track);
        }
    removeKeys(host, step, [&](const COutputChannel* key) { return has(gone, key->comp); });
}

bool isOut(const CComp* c) {
    return c->type == compAudioOut;
}

} // namespace

std::vector<CComp*> stripTargets(CQV* host, COutputChannel* ch) {
    std::vector<CComp*> targets;
    if (!ch->comp || ch->comp->type == compAudioOut) return targets;
    for (auto* c : host->comps) {
        std::set<const CComp*> seen;
        const bool loops = ch->comp->type != compSeq && feeds(host, c, ch->comp, seen);
        if (takesStrips(c) && c->input() && !loops) targets.push_back(c);
    }
    return targets;
}

CComp* stripTarget(CQV* host, COutputChannel* ch) {
    for (auto* c : host->comps)
        if (takesStrips(c) && c != ch->comp && fedBy(c, ch)) return c;
    return nullptr;
}

bool setStripTargets(CQV* host, const std::vector<COutputChannel*>& strips, CComp* to) {
    CUndo* step = nullptr;
    const auto open = [&] {
        if (!step) step = host->undoStart("Output", host, rewired);
        return step;
    };
    for (COutputChannel* ch : strips) {
        const std::vector<CComp*> targets = stripTargets(host, ch);
        if (to && !has(targets, to)) continue;
        for (CComp* t : targets) {
            if (t == to) continue;
            for (auto* cable : t->audioCables)
                if (cable->fromChannel == ch) open()->asRemove(cable, &t->audioCables);
        }
        if (to && !fedBy(to, ch))
            open()->asAdd(createAudioCable(to, ch, nullptr), &to->audioCables);
    }
    if (step) host->undoEnd(step, true);
    return step;
}

CComp* groupStrips(CQV* host, const std::vector<COutputChannel*>& strips) {
    CUndo* step = host->undoStart("Add Group", host, rewired);
    auto* group = new CGroupCh(host);
    group->init();
    group->createBuffers(host->frames);
    placeInstrument(group, host->firstOfType(compSeq), step);
    step->asAdd(group, &host->comps);
    if (CComp* out = host->getAudioOut())
        if (auto* cable = createAudioCable(out, group->output(), nullptr))
            step->asAdd(cable, &out->audioCables);
    for (COutputChannel* ch : strips) {
        for (CComp* t : stripTargets(host, ch))
            for (auto* cable : t->audioCables)
                if (cable->fromChannel == ch) step->asRemove(cable, &t->audioCables);
        step->asAdd(createAudioCable(group, ch, nullptr), &group->audioCables);
    }
    host->undoEnd(step, true);
    return group;
}

void renameComp(CComp* comp, const CStr& name) {
    if (comp->id == name) return;
    CUndo* step = comp->host->undoStart("Rename", comp->host, rewired);
    step->asName(&comp->id);
    comp->id = name;
    comp->host->undoEnd(step, true);
}

bool mayDeleteComp(CQV* host, const CComp* comp) {
    if (host->sends.contains(comp)) return true;
    if (!host->comps.contains(comp)) return false;
    int outs = 0;
    for (const auto* c : host->comps) outs += isOut(c);
    return !isOut(comp) || outs > 1;
}

namespace {

void closeWindows(CComp* comp) {
    editorHooks()->hideEditors(comp);
    if (auto* seq = compAs<CSeq>(comp)) editorHooks()->hideEditors(seq->editorComp.get());
}

} // namespace

void deleteComps(CQV* host, const std::vector<CComp*>& comps) {
    std::vector<CComp*> going;
    int outs = 0;
    for (const auto* c : host->comps) outs += isOut(c);
    for (CComp* c : comps)
        if (mayDeleteComp(host, c) && !has(going, c) && (!isOut(c) || --outs > 0))
            going.push_back(c);
    if (going.empty()) return;
    if (host->recording) host->endTake();
    const bool song = std::ranges::any_of(going, [](const CComp* c) { return c->type == compSeq; });
    if (song && host->playing) host->stop();
    for (CComp* c : going) closeWindows(c);
    CUndo* step = host->undoStart("Delete", host, rewired);
    step->effects.song = unfreeze(host, going, step);
    removeCables(host, going, step);
    for (CComp* c : going) {
        CList& from = host->sends.contains(c) ? static_cast<CList&>(host->sends) : host->comps;
        step->asRemove(c, &from);
    }
    host->undoEnd(step, true);
}
