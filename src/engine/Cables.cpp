#include "engine/Cables.h"

#include "base/CList.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/ForgetHooks.h"
#include "engine/KeyInput.h"
#include "engine/ObjectKinds.h"

#include <cassert>

namespace {

bool touches(const CIO* from, const CIO* to, const CComp* c) {
    return (from && from->comp == c) || (to && to->comp == c);
}

template <class Cable>
void take(Cable* cable, ListOf<Cable>* from, CList* into, CUndo* undo) {
    if (into) into->add(cable);
    if (undo) undo->asRemove(cable, from);
}

/// `visit` gets the lists of the keys of a component and of its inserts.
template <class F>
void eachKeyList(CComp* c, F&& visit) {
    const auto look = [&visit](CComp* keyed) {
        if (CKeyInput* key = keyInputOf(keyed)) visit(key->cables);
    };
    look(c);
    c->eachInsert(look);
}

void listCablesInto(CList* midi, CList* audio, CComp* to, CComp* c, CUndo* undo) {
    for (auto* cable : to->midiCables)
        if (cable->fromComp == c || touches(cable->fromPort, cable->toPort, c))
            take(cable, &to->midiCables, midi, undo);
    for (auto* cable : to->audioCables)
        if (cable->fromComp == c || touches(cable->fromChannel, cable->toChannel, c))
            take(cable, &to->audioCables, audio, undo);
    eachKeyList(to, [&](ListOf<CAudioCable>& keys) {
        for (auto* cable : keys)
            if (cable->fromComp == c) take(cable, &keys, audio, undo);
    });
}

/// `visit` gets a component, its children and, below the host, the sends, each before its children.
template <class F>
void eachBelow(CComp* tree, F&& visit) {
    visit(tree);
    for (auto* child : tree->comps) eachBelow(child, visit);
    if (!tree->host || tree != tree->host) return;
    for (auto* bus : tree->host->sends) eachBelow(bus, visit);
}

bool endsAt(const CComp* from, const CComp* to, const CIO* fromIO, const CIO* toIO,
            const ForgetSet& gone) {
    return gone.has(from) || gone.has(to) || gone.has(fromIO) || gone.has(toIO);
}

template <class Cable, class Question>
void dropWhere(CList& list, Question&& ends) {
    CListItem* it = nullptr;
    for (Cable* cable = nextOf<Cable>(list, it); cable;) {
        Cable* const next = nextOf<Cable>(list, it);
        if (ends(cable)) {
            list.remove(cable);
            delete cable;
        }
        cable = next;
    }
}

} // namespace

CAudioCable::CAudioCable() {
    category = categoryCable;
    type = cableAudio;
}

CMIDICable::CMIDICable() {
    category = categoryCable;
    type = cableMidi;
}

bool isMuted(const CObject* cable) {
    const CMIDICable* midi = asMidiCable(cable);
    return (midi ? midi->muted : asAudioCable(cable)->muted) != 0;
}

void setCableMute(CObject* cable, ToStore<bool> muted) {
    if (CMIDICable* midi = asMidiCable(cable)) midi->muted = muted;
    if (CAudioCable* audio = asAudioCable(cable)) {
        audio->muted = muted;
        audio->gate = PlanFade::still(muted);
    }
}

void muteAs(CObject* made, const CObject* other) {
    setCableMute(made, isMuted(other));
}

void addTwin(CUndo* undo, CObject* made, CList* list, const CObject* other) {
    muteAs(made, other);
    undo->asAdd(made, list);
}

CAudioCable* createAudioCable(CComp* to, COutputChannel* from, CInputChannel* toCh) {
    if (!toCh) toCh = to->input();
    if (!from || !toCh) return nullptr;
    auto* cable = new CAudioCable;
    cable->fromComp = from->comp;
    cable->fromChannel = from;
    cable->toComp = to;
    cable->toChannel = toCh;
    return cable;
}

CMIDICable* createMIDICable(CComp* to, CMIDIQ* from, CMIDIQ* toPort) {
    if (!toPort) toPort = to->inPort();
    if (!from || !toPort) return nullptr;
    auto* cable = new CMIDICable;
    cable->fromComp = from->comp;
    cable->fromPort = from;
    cable->toComp = to;
    cable->toPort = toPort;
    return cable;
}

CAudioCable* getAudioCable(CComp* to, COutputChannel* from, CInputChannel* toCh) {
    if (!toCh) toCh = to->input();
    for (auto* cable : to->audioCables)
        if (cable->fromChannel == from && cable->toChannel == toCh) return cable;
    return nullptr;
}

CMIDICable* getMIDICable(CComp* to, CMIDIQ* from, CMIDIQ* toPort) {
    if (!toPort) toPort = to->inPort();
    for (auto* cable : to->midiCables)
        if (cable->fromPort == from && cable->toPort == toPort) return cable;
    return nullptr;
}

bool fedBy(const CComp* to, const CMIDIQ* from) {
    for (const auto* cable : to->midiCables)
        if (from && cable->fromPort == from) return true;
    return false;
}

bool fedBy(const CComp* to, const COutputChannel* from) {
    for (const auto* cable : to->audioCables)
        if (from && cable->fromChannel == from) return true;
    return false;
}

void listCables(CList* midi, CList* audio, CComp* tree, CComp* c, CUndo* undo) {
    eachBelow(tree, [&](CComp* to) { listCablesInto(midi, audio, to, c, undo); });
}

std::vector<CAudioCable*> cablesFrom(CComp* tree, const COutputChannel* channel) {
    std::vector<CAudioCable*> found;
    eachBelow(tree, [&](CComp* to) {
        for (auto* cable : to->audioCables)
            if (channel && cable->fromChannel == channel) found.push_back(cable);
    });
    return found;
}

std::vector<CMIDICable*> cablesFrom(CComp* tree, const CMIDIQ* port) {
    std::vector<CMIDICable*> found;
    eachBelow(tree, [&](CComp* to) {
        for (auto* cable : to->midiCables)
            if (port && cable->fromPort == port) found.push_back(cable);
    });
    return found;
}

void dropCables(CComp* tree, const ForgetSet& gone) {
    assert(tree->heldByThread());
    eachBelow(tree, [&gone](CComp* to) {
        const auto drop = [&gone](CList& cables) {
            dropWhere<CAudioCable>(cables, [&gone](const CAudioCable* c) {
                return endsAt(c->fromComp, c->toComp, c->fromChannel, c->toChannel, gone);
            });
        };
        drop(to->audioCables);
        eachKeyList(to, drop);
        dropWhere<CMIDICable>(to->midiCables, [&gone](const CMIDICable* c) {
            return endsAt(c->fromComp, c->toComp, c->fromPort, c->toPort, gone);
        });
    });
}

int compToInt(CQV* host, CComp* c) {
    const int index = host->comps.indexed(c);
    return index >= 0 ? index : host->sends.indexed(c);
}

int listToInt(CQV* host, CComp* c) {
    if (host->comps.indexed(c) >= 0) return 0;
    return host->sends.indexed(c) >= 0 ? 2 : -1;
}

CList* intToList(CQV* host, int list) {
    if (list == 0 || list == 1) return &host->comps;
    return list == 2 ? &host->sends : nullptr;
}
