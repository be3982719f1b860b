#include "engine/CComp.h"

#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/EditorHooks.h"
#include "engine/Mixing.h"
#include "engine/SendOrder.h"
#include "engine/plan/PlanBuilder.h"

#include <algorithm>
#include <cassert>

namespace {

constexpr float meterFall = 0.05f;
constexpr int mapWidth = 384, mapHeight = 236;

template <class T>
T* at(CList& list, int index) {
    return static_cast<T*>(list.items(index));
}

void decay(Shared<float>& peak) {
    peak = std::max(peak - meterFall, 0.0f);
}

CComp* feedingSeq(const ListOf<CMIDICable>& midiCables) {
    for (auto* cable : midiCables)
        if (cable->fromComp && cable->fromComp->type == compSeq) return cable->fromComp;
    return nullptr;
}

} // namespace

CComp::CComp(CQV* root) : host(root) {
    id = "comp";
    category = categoryComp;
    mapStruct.width = mapWidth;
    mapStruct.height = mapHeight;
}

CComp::~CComp() {
    editorHooks()->deleteEditors(this);
    deleteAll<CObject>(maps);
    deleteAll<CObject>(comps);
    deleteAll<CObject>(progs);
    destroyBuffers();
    deleteAll<CObject>(audioCables);
    deleteAll<CObject>(midiCables);
    deleteAll<CObject>(inputs);
    deleteAll<CObject>(outputs);
    deleteAll<CObject>(inPorts);
    deleteAll<CObject>(outPorts);
}

void CComp::edit(bool show) {
    editorHooks()->showEditor(this, show);
}

void CComp::idle() {
    for (auto* ch : outputs) ch->idle();
    if (notices.take(CompNotice::maps)) editorHooks()->refreshMap(this);
    editorHooks()->idle(this);
}

void CComp::afteridle() {
    for (auto* in : inputs) {
        decay(in->peakL);
        decay(in->peakR);
    }
    for (auto* ch : outputs) ch->peakFadeout();
    eachInsert([](CComp* insert) {
        if (COutputChannel* out = insert->output()) out->peakFadeout();
    });
}

void CComp::prepare(int frames) {
    assert(heldByThread());
    processed = mixed = fxDone = false;
    if (!planned || !planned->clears) clearChannels(*this, frames);
    if (listKind != listInsert) findSourceSeq();
    for (auto* ch : outputs) adoptInserts(ch);
    for (auto* port : inPorts) port->clear();
    for (auto* port : outPorts) {
        port->clear();
        port->freezeItems = nullptr;
    }
}

void CComp::planRender(PlanBuilder& plan) {
    plan.needMidi(this);
    plan.needAudio(this);
    plan.render(this);
}

void CComp::planStrip(PlanBuilder& plan) {
    plan.strip(this);
}

// A sequencer's channels make it its own source. The word is stored once: others read it meanwhile.
void CComp::findSourceSeq() {
    CComp* found = feedingSeq(midiCables);
    for (auto* ch : outputs) {
        if (!ch->comp || ch->comp->type != compSeq) continue;
        if (ch->comp == this)
            found = this;
        else
            ch->comp->sourceSeq = ch->comp;
    }
    sourceSeq = found;
}

void CComp::adoptInserts(COutputChannel* ch) {
    for (auto* insert : ch->inserts) {
        insert->listKind = listInsert;
        insert->ownerChannel = ch;
        insert->sourceSeq = sourceSeq;
    }
}

void CComp::setFrames(int frames) {
    for (auto* in : inputs) in->createBuffers(frames);
    for (auto* ch : outputs) ch->setFrames(frames);
}

void CComp::setRate(double rate) {
    for (auto* ch : outputs) ch->setRate(rate);
}

void CComp::enable(ToStore<int> on) {
    if (enabled == on) return;
    enabled = on;
    host->hostNotices.raise(HostNotice::delays);
}

bool CComp::heldByThread() const {
    return holdsGraph(host);
}

CStr CComp::getName(CObject* io) {
    if (io->asType(categoryChannel, channelOutput) && outputs.getCount() > 1)
        return CStr("Out ") + asStr(outputs.indexed(io) + 1);
    if (io->asType(categoryChannel, channelInput))
        return inputs.getCount() > 1 ? CStr("In ") + asStr(inputs.indexed(io) + 1) : CStr("");
    return id;
}

void CComp::setProg(ToStore<int> index) {
    if (index == curProg || index < 0 || index >= numProgs()) return;
    curProg = index;
    notices.raise(CompNotice::program);
}

void CComp::read(CStream* stream, int end) {
    if (stream->getPos() < end) stream->seek(end, seekStart);
}

void CComp::saving() {
    editorHooks()->saveEditor(this);
}

CComp* CComp::copy() {
    showMsg(nullptr, "Error", "error: copy() missing in class", mbOk);
    return nullptr;
}

void CComp::copySendData(CList* records) {
    for (auto* ch : outputs) records->add(new CSendRecord(ch));
}

CProgram* CComp::getProgram(int index) {
    return at<CProgram>(progs, index == -1 ? int(curProg) : index);
}

int CComp::getMacroParam(int index) {
    return index >= 0 && index < macroCount ? macroParams[index] : -1;
}

void CComp::setMacroParam(int index, int param) {
    if (index >= 0 && index < macroCount) macroParams[index] = param;
}

void CComp::setId(const CStr& name) {
    id = name;
    editorHooks()->nameChanged(this);
}

CAudioCable* CComp::addAudioCable(COutputChannel* from, CInputChannel* to) {
    assert(mayRewire());
    if (!to) to = input();
    if (!from || !to) return nullptr;
    CAudioCable* cable = getAudioCable(this, from, to);
    if (cable) {
        audioCables.remove(cable);
        return cable;
    }
    cable = createAudioCable(this, from, to);
    audioCables.add(cable);
    return cable;
}

CMIDICable* CComp::addMIDICable(CMIDIQ* from, CMIDIQ* to) {
    assert(mayRewire());
    if (!to) to = inPort();
    if (!from || !to) return nullptr;
    CMIDICable* cable = getMIDICable(this, from, to);
    if (cable) {
        midiCables.remove(cable);
        return cable;
    }
    cable = createMIDICable(this, from, to);
    midiCables.add(cable);
    return cable;
}

COutputChannel* CComp::getCurOutputChannel() {
    return output(curOutput);
}

void CComp::setCurOutputChannel(int index) {
    curOutput = index;
}

void CComp::copyData(CComp* src) {
    CMemoryStream stream;
    src->write(&stream);
    const int size = stream.getPos();
    stream.seek(0, seekStart);
    id = src->id;
    posX = src->posX;
    posY = src->posY;
    read(&stream, size);
}

void CComp::clearIO() {
    deleteAll<CObject>(inPorts);
    deleteAll<CObject>(outPorts);
    deleteAll<CObject>(inputs);
    deleteAll<CObject>(outputs);
}

void CComp::copyIO(CComp* src) {
    while (inPorts.getCount() < src->inPorts.getCount()) inPorts.add(new CInputPort(this));
    while (outPorts.getCount() < src->outPorts.getCount()) outPorts.add(new COutputPort(this));
    while (inputs.getCount() < src->inputs.getCount()) inputs.add(new CInputChannel(this));
    while (outputs.getCount() < src->outputs.getCount()) outputs.add(new COutputChannel(this));
    for (int i = 0; i < src->inputs.getCount(); ++i)
        input(i)->channels = int(src->input(i)->channels);
    for (int i = 0; i < src->outputs.getCount(); ++i) output(i)->copySettings(src->output(i));
    createBuffers(host->frames);
}

void CComp::copyCables(CComp* src, CUndo* undo) {
    for (auto* cable : src->audioCables)
        if (CInputChannel* to = input(src->inputs.indexed(cable->toChannel)))
            if (auto* twin = createAudioCable(this, cable->fromChannel, to))
                addTwin(undo, twin, &audioCables, cable);
    for (auto* cable : src->midiCables)
        if (CMIDIQ* to = inPort(src->inPorts.indexed(cable->toPort)))
            if (auto* twin = createMIDICable(this, cable->fromPort, to))
                addTwin(undo, twin, &midiCables, cable);
    for (auto* dest : host->comps) {
        copyAudioTo(dest, src, undo);
        copyMIDITo(dest, src, undo);
    }
    for (auto* bus : host->sends) copyMIDITo(bus, src, undo);
}

void CComp::copyAudioTo(CComp* dest, CComp* src, CUndo* undo) {
    for (auto* cable : dest->audioCables) {
        COutputChannel* from = output(src->outputs.indexed(cable->fromChannel));
        if (auto* twin = from ? createAudioCable(dest, from, cable->toChannel) : nullptr)
            addTwin(undo, twin, &dest->audioCables, cable);
    }
}

void CComp::copyMIDITo(CComp* dest, CComp* src, CUndo* undo) {
    for (auto* cable : dest->midiCables) {
        CMIDIQ* from = outPort(src->outPorts.indexed(cable->fromPort));
        if (auto* twin = from ? createMIDICable(dest, from, cable->toPort) : nullptr)
            addTwin(undo, twin, &dest->midiCables, cable);
    }
}

void CComp::stripCables(CComp* c, CUndo* undo) {
    listCables(nullptr, nullptr, this, c, undo);
}

void CComp::editMap(CWin*) {
    editorHooks()->editMap(this);
}

void CComp::createBuffers(int frames) {
    for (auto* in : inputs) in->createBuffers(frames);
    for (auto* ch : outputs) ch->createBuffers(frames);
}

void CComp::destroyBuffers() {
    for (auto* in : inputs) in->destroyBuffers();
    for (auto* ch : outputs) ch->destroyBuffers();
}

COutputChannel* CComp::output(int index) {
    return at<COutputChannel>(outputs, index);
}

CInputChannel* CComp::input(int index) {
    return at<CInputChannel>(inputs, index);
}

CMIDIQ* CComp::outPort(int index) {
    return at<CMIDIQ>(outPorts, index);
}

CMIDIQ* CComp::inPort(int index) {
    return at<CMIDIQ>(inPorts, index);
}
