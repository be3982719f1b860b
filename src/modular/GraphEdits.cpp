#include "modular/GraphEdits.h"

#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "engine/KeyInput.h"
#include "engine/ObjectKinds.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "modular/GraphModel.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace {

constexpr StepEffects rewired = {.graph = true};
constexpr int dropGap = 24; ///< pixels between what is dropped together

int kept(int place) {
    return asMinMax(place, 0, int(GraphModel::mostPlace));
}

void record(CUndo* step, int& field, int value) {
    if (field == value) return;
    step->asInt(&field);
    std::atomic_ref(field).store(value, std::memory_order_relaxed);
}

void recordPlace(CUndo* step, CComp* comp, CPoint at) {
    record(step, comp->posX, kept(at.x));
    record(step, comp->posY, kept(at.y));
}

/// Calls `visit(comp)` for all that may own cables.
template <class F>
void eachCabled(CQV* host, F&& visit) {
    for (const auto* list : listsOf(host->comps, host->sends))
        for (auto* comp : *list) {
            visit(comp);
            if (auto* seq = compAs<CSeq>(comp))
                for (auto* track : seq->tracks) visit(track);
        }
}

CObject* newCable(CIO* from, CIO* to) {
    if (from->category == categoryPort)
        return createMIDICable(to->comp, static_cast<CMIDIQ*>(from), static_cast<CMIDIQ*>(to));
    return createAudioCable(to->comp, asStrip(from), asInput(to));
}

CObject* cableBetween(CIO* from, CIO* to) {
    if (const CKeyInput* key = keyOf(to))
        return key->source() == from ? static_cast<CObject*>(key->cables.getFirst()) : nullptr;
    if (from->category == categoryPort)
        return getMIDICable(to->comp, static_cast<CMIDIQ*>(from), static_cast<CMIDIQ*>(to));
    return getAudioCable(to->comp, asStrip(from), asInput(to));
}

CList& cablesOf(CComp* comp, bool midi) {
    if (midi) return comp->midiCables;
    return comp->audioCables;
}

/// A cable as the ports that it joins.
struct Ends {
    CIO *from, *to;
    bool midi;
    explicit Ends(const CObject* cable) : midi(cable->type == cableMidi) {
        if (midi) {
            const CMIDICable* c = asMidiCable(cable);
            from = c->fromPort, to = c->toPort;
        } else {
            const CAudioCable* c = asAudioCable(cable);
            from = c->fromChannel, to = c->toChannel;
        }
    }
};

/// Muted as another one is that it stands for.
void addCable(CUndo* step, CIO* from, CIO* to, const CObject* like = nullptr) {
    if (!from || !to) return;
    CObject* made = newCable(from, to);
    if (like) muteAs(made, like);
    step->asAdd(made, &cablesOf(to->comp, from->category == categoryPort));
}

/// The list that owns a cable; null when it is in none any more.
CList* ownerOf(CQV* host, CObject* cable) {
    CList* found = nullptr;
    eachCabled(host, [&](CComp* comp) {
        for (CList* list : listsOf(comp->midiCables, comp->audioCables))
            if (list->contains(cable)) found = list;
    });
    eachKeyed(host, [&](CComp*, CKeyInput& key) {
        if (key.cables.contains(cable)) found = &key.cables;
    });
    return found;
}

CIO* firstPort(const CComp* comp, bool midi, bool output) {
    if (midi) return (output ? comp->outPorts : comp->inPorts).items(0);
    if (output) return comp->outputs.items(0);
    return comp->inputs.items(0);
}

bool isOutputPort(const CIO* io) {
    return io->category == categoryPort ? io->type == portOutput : io->type == channelOutput;
}

void makeReady(CComp* comp) {
    comp->createBuffers(comp->host->frames);
    comp->setRate(double(comp->host->rate));
}

} // namespace

// Selecting.

std::vector<CComp*> selectedComps(CQV* host) {
    std::vector<CComp*> chosen;
    for (auto* comp : host->comps)
        if (comp->hasFlag(compSelected)) chosen.push_back(comp);
    return chosen;
}

void selectOnly(CQV* host, CComp* comp) {
    for (auto* other : host->comps) other->setFlag(compSelected, other == comp);
}

// Places.

void placeComps(CQV* host, std::span<CComp* const> comps, std::span<const CPoint> places,
                const CStr& title) {
    CUndo* step = host->undoStart(title, host);
    for (size_t i = 0; i < comps.size(); i++) recordPlace(step, comps[i], places[i]);
    host->undoEnd(step, true);
}

void moveComps(CQV* host, CPoint by) {
    const std::vector<CComp*> comps = selectedComps(host);
    std::vector<CPoint> places;
    places.reserve(comps.size());
    for (const CComp* comp : comps) places.push_back(asPoint(comp->posX + by.x, comp->posY + by.y));
    placeComps(host, comps, places, "Move");
}

void tidyComps(CQV* host) {
    std::vector<CComp*> comps;
    for (auto* comp : host->comps) comps.push_back(comp);
    placeComps(host, comps, layGraph(GraphModel(host).layout()), "Tidy");
}

void tidyNewGraph(CQV* host) {
    const std::vector<CPoint> places = layGraph(GraphModel(host).layout());
    size_t i = 0;
    for (auto* comp : host->comps) {
        comp->posX = kept(places[i].x);
        comp->posY = kept(places[i++].y);
    }
}

// Cables.

bool areJoined(CIO* a, CIO* b) {
    return isOutputPort(a) ? cableBetween(a, b) != nullptr : cableBetween(b, a) != nullptr;
}

void toggleCable(CIO* a, CIO* b) {
    CIO *from = isOutputPort(a) ? a : b, *to = isOutputPort(a) ? b : a;
    CQV* host = to->comp->host;
    if (keyOf(to)) {
        COutputChannel* strip = asStrip(from);
        const bool joined = areJoined(a, b);
        if (joined || mayKey(to->comp, strip)) setKey(to->comp, joined ? nullptr : strip);
        return;
    }
    CUndo* step = host->undoStart("Connection", host, rewired);
    if (CObject* cable = cableBetween(from, to))
        step->asRemove(cable, &cablesOf(to->comp, from->category == categoryPort));
    else
        addCable(step, from, to);
    host->undoEnd(step, true);
}

void deleteCable(CQV* host, CObject* cable) {
    CList* list = ownerOf(host, cable);
    if (!list) return;
    CUndo* step = host->undoStart("Delete", host, rewired);
    step->asRemove(cable, list);
    host->undoEnd(step, true);
}

std::optional<StoredValue> muteOfItem(CObject* item) {
    if (!item) return std::nullopt;
    if (item->category == categoryCable) return muteOfCable(item);
    if (COutputChannel* strip = asStrip(item)) return muteOf(strip);
    const CComp* comp = asComp(item);
    if (!comp || comp->outputs.getCount() != 1) return std::nullopt;
    return muteOf(comp->outputs.items(0));
}

void toggleMute(CQV* host, CObject* item) {
    if (const auto value = muteOfItem(item))
        host->values->set(*value, value->get()[0] != 0.0 ? 0.0 : 1.0);
}

// New components.

namespace {

/// The name, or with the first number behind a blank that no component bears.
CStr freeCompName(CQV* host, const CStr& name, const CUndo* step) {
    const auto taken = [&](const CStr& wanted) {
        bool found = false;
        eachWithPending(step, &host->comps,
                        [&](const CComp* c) { found = found || c->id == wanted; });
        return found;
    };
    if (!taken(name)) return name;
    CStr stem = name;
    const char* number = std::strrchr(stem.asChar(), ' ');
    if (number && strAsInt(number + 1) > 1) stem = stem.sub(0, int(number - stem.asChar()));
    CStr free = stem;
    for (int i = 2; taken(free); i++) free = stem + " " + asStr(i);
    return free;
}

void cableToDevices(CUndo* step, CComp* comp) {
    CQV* host = comp->host;
    const bool instrument =
        comp->type == compSampler || (comp->type == compVST && comp->inputs.empty());
    CComp *keys = host->getMIDIIn(), *out = host->getAudioOut();
    if (instrument && keys) addCable(step, keys->outPort(), comp->inPort());
    const bool sounds = instrument || comp->type == compGroupCh;
    if (sounds && out) addCable(step, comp->output(), out->input());
}

/// In place of a cable come those to the component and from it.
void leadThrough(CUndo* step, CComp* comp, CObject* cable) {
    const Ends ends(cable);
    step->asRemove(cable, &cablesOf(ends.to->comp, ends.midi));
    CIO *in = firstPort(comp, ends.midi, false), *out = firstPort(comp, ends.midi, true);
    if (!cableBetween(ends.from, in)) addCable(step, ends.from, in);
    if (!cableBetween(out, ends.to)) addCable(step, out, ends.to, cable);
}

void link(CUndo* step, CComp* comp, CPoint at) {
    comp->posX = kept(at.x);
    comp->posY = kept(at.y);
    comp->id = freeCompName(comp->host, comp->id, step);
    selectOnly(comp->host, nullptr);
    comp->setFlag(compSelected, true);
    step->asAdd(comp, &comp->host->comps);
}

} // namespace

CComp* addComp(CQV* host, int type, CPoint at, CObject* into) {
    std::unique_ptr<CComp> made(createComp(host, categoryComp, static_cast<unsigned char>(type)));
    made->init();
    makeReady(made.get());
    return addComp(host, std::move(made), at, into);
}

CComp* addComp(CQV* host, std::unique_ptr<CComp> made, CPoint at, CObject* into) {
    CComp* comp = made.release();
    CUndo* step = host->undoStart("Add comp", host, rewired);
    link(step, comp, at);
    if (into && ownerOf(host, into) && fitsInto(comp, into))
        leadThrough(step, comp, into);
    else
        cableToDevices(step, comp);
    host->undoEnd(step, true);
    return comp;
}

int presetType(const CStr& path) {
    constexpr struct {
        const char* ending;
        int type;
    } endings[] = {{".qvs", compSampler}, {".qve", compEffect}, {".qva", compArp}};
    const CStr ending = extractFileExt(path);
    for (const auto& e : endings)
        if (sameText(ending, e.ending)) return e.type;
    return 0;
}

namespace {

/// Null after a message.
CComp* readPreset(CQV* host, const CStr& path) {
    CFileStream stream(path, 0);
    CComp* comp = createComp(host, categoryComp, static_cast<unsigned char>(presetType(path)));
    if (comp->type == compSampler)
        comp->createChannels();
    else
        comp->init();
    makeReady(comp);
    if (stream.isOpen()) comp->read(&stream, stream.getSize());
    if (stream.isOpen() && comp->getProgram(-1)) {
        makeReady(comp);
        comp->id = changeFileExt(extractFileName(path), "");
        return comp;
    }
    delete comp;
    showMsg(nullptr, "Error", "Could not read file " + path);
    return nullptr;
}

} // namespace

void addPresets(CQV* host, const std::vector<CStr>& paths, CPoint at) {
    CStr names;
    for (const CStr& path : paths)
        names += (names.empty() ? CStr() : CStr(", ")) + extractFileName(path);
    CUndo* step = host->undoStart("Drop " + names, host, rewired);
    std::vector<CComp*> made;
    for (const CStr& path : paths) {
        CComp* comp = readPreset(host, path);
        if (!comp) continue;
        link(step, comp, at);
        cableToDevices(step, comp);
        made.push_back(comp);
        at.x += boxSize(comp).x + dropGap;
    }
    for (CComp* comp : made) comp->setFlag(compSelected, true);
    host->undoEnd(step, true);
}

void chooseDevice(CComp* comp, Shared<int>& device, int index) {
    if (device == index) return;
    CUndo* step = comp->host->undoStart("Device", comp->host);
    step->asInt(device.address());
    device = index;
    comp->host->undoEnd(step, true);
}

// Duplicating.

bool mayDuplicate(const CComp* comp) {
    for (const int type : {compSampler, compEffect, compVST, compArp, compGroupCh})
        if (comp->type == type) return true;
    return false;
}

namespace {

/// The ports of components and of their copies.
class Twins {
public:
    void add(CComp* source, CComp* copy) {
        join(source->inPorts, copy->inPorts);
        join(source->outPorts, copy->outPorts);
        join(source->inputs, copy->inputs);
        join(source->outputs, copy->outputs);
    }
    CIO* of(CIO* port) const {
        for (const auto& [source, copy] : pairs)
            if (source == port) return copy;
        return nullptr;
    }

private:
    void join(const CList& from, const CList& to) {
        for (int i = 0; i < asMin(from.getCount(), to.getCount()); i++)
            pairs.emplace_back(static_cast<CIO*>(from.items(i)), static_cast<CIO*>(to.items(i)));
    }
    std::vector<std::pair<CIO*, CIO*>> pairs;
};

} // namespace

void duplicateComps(CQV* host, const std::vector<CComp*>& comps, CPoint by) {
    CUndo* step = host->undoStart("Duplicate", host, rewired);
    Twins twins;
    std::vector<std::pair<CComp*, CComp*>> copies;
    for (CComp* comp : comps) {
        CComp* copy = mayDuplicate(comp) ? comp->copy() : nullptr;
        if (!copy) continue;
        if (step->items.empty()) selectOnly(host, nullptr);
        makeReady(copy);
        copy->posX = kept(comp->posX + by.x);
        copy->posY = kept(comp->posY + by.y);
        copy->id = freeCompName(host, comp->id, step);
        copy->setFlag(compSelected, true);
        twins.add(comp, copy);
        copies.emplace_back(comp, copy);
        step->asAdd(copy, &host->comps);
    }
    for (const auto& [comp, copy] : copies)
        copyKeys(comp, copy, [&twins](COutputChannel* strip) { return asStrip(twins.of(strip)); });
    eachCabled(host, [&](CComp* comp) {
        for (const auto& list : viewsOf<CObject>(comp->midiCables, comp->audioCables))
            for (const auto* cable : list) {
                const Ends ends(cable);
                CIO *from = twins.of(ends.from), *to = twins.of(ends.to);
                if (from || to) addCable(step, from ? from : ends.from, to ? to : ends.to, cable);
            }
    });
    host->undoEnd(step, true);
}

// Into cables and out of them.

bool fitsInto(const CComp* comp, const CObject* cable) {
    const Ends ends(cable);
    return ends.from && ends.to && !keyOf(ends.to) && ends.from->comp != comp &&
           ends.to->comp != comp && firstPort(comp, ends.midi, false) &&
           firstPort(comp, ends.midi, true) && comp->type != compAudioOut && comp->type != compSeq;
}

void insertComp(CQV* host, CComp* comp, CObject* cable, CPoint at) {
    if (!ownerOf(host, cable) || !fitsInto(comp, cable)) return;
    CUndo* step = host->undoStart("Insert", host, rewired);
    recordPlace(step, comp, at);
    leadThrough(step, comp, cable);
    host->undoEnd(step, true);
}

namespace {

struct Through {
    std::vector<CObject*> in, out;
};

Through cablesThrough(CQV* host, const CComp* comp, bool midi) {
    Through found;
    eachCabled(host, [&](CComp* owner) {
        for (auto* cable : objectsIn(cablesOf(owner, midi))) {
            const Ends ends(cable);
            if (ends.to->comp == comp) found.in.push_back(cable);
            if (ends.from->comp == comp) found.out.push_back(cable);
        }
    });
    return found;
}

bool leadsThrough(const Through& through) {
    return !through.in.empty() && !through.out.empty();
}

} // namespace

bool canPullOut(CQV* host, CComp* comp) {
    return comp->type != compSeq && (leadsThrough(cablesThrough(host, comp, true)) ||
                                     leadsThrough(cablesThrough(host, comp, false)));
}

void pullOutComp(CQV* host, CComp* comp, CPoint by) {
    if (!canPullOut(host, comp)) return;
    CUndo* step = host->undoStart("Pull out", host, rewired);
    for (const bool midi : {true, false}) {
        const Through through = cablesThrough(host, comp, midi);
        if (!leadsThrough(through)) continue;
        std::vector<std::pair<CIO*, CIO*>> made;
        for (const CObject* in : through.in)
            for (const CObject* out : through.out) {
                const std::pair join{Ends(in).from, Ends(out).to};
                const bool known = std::ranges::find(made, join) != made.end();
                if (known || join.first->comp == comp || join.second->comp == comp ||
                    cableBetween(join.first, join.second))
                    continue;
                made.push_back(join);
                addCable(step, join.first, join.second);
            }
        for (CObject* cable : through.in) step->asRemove(cable, &cablesOf(comp, midi));
        for (CObject* cable : through.out)
            if (Ends(cable).to->comp != comp)
                step->asRemove(cable, &cablesOf(Ends(cable).to->comp, midi));
    }
    recordPlace(step, comp, asPoint(comp->posX + by.x, comp->posY + by.y));
    host->undoEnd(step, true);
}
