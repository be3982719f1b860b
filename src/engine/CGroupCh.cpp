#include "engine/CGroupCh.h"

#include "base/Messages.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"

#include <cstring>

namespace {

constexpr int newGroupPos = 128;

/// A step that adds `bus` to `list` and leads its output to the audio out.
void addBus(CQV* host, CGroupCh* bus, ListOf<CComp>* list, const CStr& title) {
    CUndo* u = host->undoStart(title, host, {.graph = true});
    if (bus->outputs.empty()) bus->init();
    bus->createBuffers(host->frames);
    u->asAdd(bus, list);
    CComp* out = host->getAudioOut();
    if (auto* cable = out ? createAudioCable(out, bus->output(), nullptr) : nullptr)
        u->asAdd(cable, &out->audioCables);
    host->undoEnd(u, true);
}

} // namespace

CGroupCh::CGroupCh(CQV* root) : CComp(root) {
    id = "Group";
    type = compGroupCh;
}

void CGroupCh::init() {
    inPorts.add(new CInputPort(this));
    inputs.add(new CInputChannel(this));
    outputs.add(new COutputChannel(this));
}

void CGroupCh::process(int frames) {
    const ProcessGuard guard(this);
    if (!guard.enter) return;
    mergeMIDI(frames);
    mergeAudio(frames);
    const CInputChannel* in = input();
    COutputChannel* out = output();
    if (!in || !out) return;
    std::memcpy(out->bufL, in->bufL, size_t(frames) * sizeof(float));
    std::memcpy(out->bufR, in->bufR, size_t(frames) * sizeof(float));
}

void CGroupCh::read(CStream* stream, int end) {
    while (auto* in = input()) {
        inputs.del(0);
        delete in;
    }
    while (auto* out = output()) {
        outputs.del(0);
        delete out;
    }
    CComp::read(stream, end);
}

CComp* CGroupCh::copy() {
    auto* twin = new CGroupCh(host);
    twin->id = id;
    twin->copyIO(this);
    return twin;
}

bool addSendBus(std::unique_ptr<CGroupCh> bus) {
    CQV* host = bus->host;
    if (host->sends.getCount() >= maxSends) {
        showMsg(nullptr, "Error", "Too many sends");
        return false;
    }
    addBus(host, bus.release(), &host->sends, "Add Send");
    return true;
}

void CQV::addSendClicked(CObject*) {
    auto bus = std::make_unique<CGroupCh>(this);
    bus->id = "Send";
    addSendBus(std::move(bus));
}

void CQV::addGroupClicked(CObject*) {
    auto* group = new CGroupCh(this);
    group->posX = newGroupPos;
    group->posY = newGroupPos;
    addBus(this, group, &comps, "Add Group");
}
