#include "sequencer/song/FolderSum.h"

#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "sequencer/edit/TrackEdits.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace {

constexpr int beside = 128; ///< pixels of the graph, from the audio out to a new group

using Members = std::function<bool(const CTrack*)>;

bool isEnd(const CComp* comp) {
    return comp->type == compAudioOut || comp->type == compGroupCh;
}

/// The channels through which some tracks of a song are heard, and no others.
class Sources {
public:
    Sources(CSeq* song, const Members& members) : seq(song), isMember(members) {
        for (auto* t : seq->tracks)
            if (isMember(t)) addTrack(t);
        while (addNextComp()) {
        }
    }
    /// Calls `visit(cable, comp)` for the cables that lead from them to an audio out, or to a group
    /// that other sound leads to as well.
    template <class F>
    void eachEnd(F&& visit) const {
        for (auto* to : seq->host->comps) {
            if (!isEnd(to) || has(to->output())) continue;
            for (auto* cable : to->audioCables)
                if (has(cable->fromChannel)) visit(cable, to);
        }
    }
    bool has(const COutputChannel* ch) const { return std::ranges::find(all, ch) != all.end(); }
    /// Groups that nothing else leads to, the first that are reached first.
    const std::vector<CComp*>& groups() const { return reached; }

private:
    void add(CComp* comp) {
        for (auto* ch : comp->outputs) all.push_back(ch);
    }
    void addTrack(CTrack* track) {
        if (track->kind != trackMIDI) return add(track);
        for (auto* synth : seq->host->comps)
            if (fedBy(synth, track->outPort()) && playsMembersAlone(synth) && !has(synth->output()))
                add(synth);
    }
    bool playsMembersAlone(const CComp* synth) const {
        for (auto* t : seq->tracks)
            if (t->kind == trackMIDI && fedBy(synth, t->outPort()) && !isMember(t)) return false;
        return true;
    }
    bool addNextComp() {
        for (auto* c : seq->host->comps) {
            if (c->type != compEffect && c->type != compGroupCh) continue;
            if (c->audioCables.empty() || !c->output() || has(c->output())) continue;
            bool ours = true;
            for (auto* cable : c->audioCables) ours = ours && has(cable->fromChannel);
            if (!ours) continue;
            add(c);
            if (c->type == compGroupCh) reached.push_back(c);
            return true;
        }
        return false;
    }

    CSeq* const seq;
    const Members isMember;
    std::vector<const COutputChannel*> all;
    std::vector<CComp*> reached;
};

void lead(CUndo* undo, COutputChannel* from, CComp* to) {
    if (to && !getAudioCable(to, from, nullptr))
        if (CAudioCable* cable = createAudioCable(to, from, nullptr))
            undo->asAdd(cable, &to->audioCables);
}

void insertGroup(CSeq* seq, const CTrack* folder, const Sources& sources, CUndo* undo) {
    CQV* host = seq->host;
    auto* group = new CGroupCh(host);
    group->init();
    group->createBuffers(host->frames);
    group->id = folder->id;
    std::vector<CComp*> outs;
    sources.eachEnd([&](CAudioCable* cable, CComp* out) {
        if (std::ranges::find(outs, out) == outs.end()) outs.push_back(out);
        undo->asRemove(cable, &out->audioCables);
        lead(undo, cable->fromChannel, group);
    });
    group->posX = asMax(outs.front()->posX - beside, 0);
    group->posY = outs.front()->posY;
    undo->asAdd(group, &host->comps);
    for (CComp* out : outs) lead(undo, group->output(), out);
}

/// Calls `visit(end)` for the audio outs and groups that a component leads to.
template <class F>
void eachEndOf(CSeq* seq, CComp* comp, F&& visit) {
    for (auto* end : seq->host->comps)
        if (isEnd(end) && fedBy(end, comp->output())) visit(end);
}

void removeGroup(CSeq* seq, CComp* group, CUndo* undo) {
    for (auto* cable : group->audioCables)
        eachEndOf(seq, group, [&](CComp* end) { lead(undo, cable->fromChannel, end); });
    seq->host->stripCables(group, undo);
    undo->asRemove(group, &seq->host->comps);
}

/// `taken` are the groups of the folders inside.
CComp* groupOf(CSeq* seq, const CTrack* folder, std::vector<CComp*>& taken, int depth = 0) {
    if (depth > mostFolderDepth) return nullptr;
    for (auto* t : seq->tracks)
        if (t->kind == trackFolder && t->folder == folder) groupOf(seq, t, taken, depth + 1);
    const Sources sources(seq, [folder](const CTrack* t) { return isInside(t, folder); });
    for (CComp* group : sources.groups()) {
        if (std::ranges::find(taken, group) != taken.end()) continue;
        taken.push_back(group);
        return group;
    }
    return nullptr;
}

/// The groups of a folder and of those around it, the innermost first.
std::vector<CComp*> groupsAround(CSeq* seq, const CTrack* folder) {
    std::vector<CComp*> groups;
    for (int depth = 0; folder && depth < mostFolderDepth; folder = folder->folder, depth++)
        if (CComp* group = folderGroup(seq, folder)) groups.push_back(group);
    return groups;
}

} // namespace

CComp* folderGroup(CSeq* seq, const CTrack* folder) {
    bool any = false;
    for (const auto* c : seq->host->comps) any = any || c->type == compGroupCh;
    std::vector<CComp*> taken;
    return any ? groupOf(seq, folder, taken) : nullptr;
}

bool sumFolder(CSeq* seq, CTrack* folder) {
    CComp* group = folderGroup(seq, folder);
    const Sources sources(seq, [folder](const CTrack* t) { return isInside(t, folder); });
    bool any = group != nullptr;
    sources.eachEnd([&any](CAudioCable*, CComp*) { any = true; });
    if (!any) return false;
    CUndo* undo = seq->host->undoStart("Sum folder", seq, {.graph = true});
    if (group)
        removeGroup(seq, group, undo);
    else
        insertGroup(seq, folder, sources, undo);
    seq->host->undoEnd(undo, true);
    return true;
}

void followFolder(CSeq* seq, CTrack* track, const CTrack* from, const CTrack* to, CUndo* undo) {
    const std::vector<CComp*> inner = groupsAround(seq, from), outer = groupsAround(seq, to);
    CComp* const before = inner.empty() ? nullptr : inner.front();
    CComp* const after = outer.empty() ? nullptr : outer.front();
    if (before == after) return;
    const Sources sources(seq,
                          [track](const CTrack* t) { return t == track || isInside(t, track); });
    const auto leadOn = [&](CAudioCable* cable, CComp* end) {
        undo->asRemove(cable, &end->audioCables);
        if (after) return lead(undo, cable->fromChannel, after);
        eachEndOf(seq, inner.back(), [&](CComp* out) { lead(undo, cable->fromChannel, out); });
    };
    if (!before)
        return sources.eachEnd([&](CAudioCable* cable, CComp* end) {
            if (end->type == compAudioOut) leadOn(cable, end);
        });
    for (auto* cable : before->audioCables)
        if (sources.has(cable->fromChannel)) leadOn(cable, before);
}
