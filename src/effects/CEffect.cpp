#include "effects/CEffect.h"

#include "base/CStream.h"
#include "base/Numbers.h"
#include "base/OpenBlock.h"
#include "common/fx/CCompressor.h"
#include "common/fx/CGate.h"
#include "effects/RackFiles.h"
#include "effects/RackParams.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/Macros.h"
#include "engine/ParamUnit.h"
#include "engine/ProgramEdits.h"
#include "engine/SongClock.h"
#include "engine/StripEvents.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphWorkers.h"
#include "engine/plan/PlanBuilder.h"

#include <algorithm>

namespace {

/// Moves all that `from` holds to the end of `to`, without allocation.
void moveAll(CList& from, CList& to) {
    while (void* p = from.getFirst()) to.move(&from, p, -1);
}

} // namespace

CEffectProg::CEffectProg() {
    id = "effect";
    category = categoryEffectProg;
}

CEffectProg::~CEffectProg() {
    deleteAll(effects);
}

CEffect::CEffect(CQV* root) : CComp(root) {
    id = "Multi Effect";
    type = compEffect;
    key.channel.createBuffers(host->frames);
}

void CEffect::init() {
    createIO();
    addDelay();
    notices.raise(CompNotice::content);
}

void CEffect::createIO() {
    inPorts.add(new CInputPort(this));
    inputs.add(new CInputChannel(this));
    outputs.add(new COutputChannel(this));
}

CComp* CEffect::copy() {
    auto* twin = new CEffect(host);
    twin->copyData(this);
    twin->copyIO(this);
    return twin;
}

/// Also of those that steps of the history hold off the graph, of whatever rack they are.
template <class F>
void CEffect::eachEffect(F&& visit) {
    const auto eachOf = [&visit](CObject* prog) {
        for (auto* fx : static_cast<CEffectProg*>(prog)->effects) visit(fx);
    };
    for (auto* prog : programs()) eachOf(prog);
    host->eachHeld([&](CObject* object) {
        if (object->category == categoryEffectProg) eachOf(object);
        if (object->category == categoryEffect) visit(static_cast<CFX*>(object));
    });
}

void CEffect::setFrames(int frames) {
    eachEffect([frames](CFX* fx) { fx->setFrames(frames); });
    key.channel.createBuffers(frames);
    CComp::setFrames(frames);
}

void CEffect::setRate(double rate) {
    eachEffect([rate](CFX* fx) { fx->setRate(float(rate)); });
    CComp::setRate(rate);
}

// Sound.

ListView<CEffectProg> CEffect::programs() const {
    return listAs<CEffectProg>(progs);
}

CEffectProg* CEffect::getProg() {
    return programs().items(curProg);
}

int CEffect::getDelay() {
    const CEffectProg* prog = getProg();
    if (!prog) return 0;
    int frames = 0;
    for (const auto* fx : prog->effects)
        if (fx->enabled) frames += fx->latency();
    return frames;
}

/// Programs and effects are switched in many ways, so the sum is looked at here.
void CEffect::idle() {
    CComp::idle();
    const int now = getDelay();
    if (now == declaredDelay) return;
    declaredDelay = now;
    host->hostNotices.raise(HostNotice::delays);
}

void CEffect::start() {
    for (auto* prog : programs())
        for (auto* fx : prog->effects) fx->start();
}

void CEffect::planRender(PlanBuilder& plan) {
    plan.needAudio(this);
    plan.needMidi(this);
    plan.render(this);
}

void CEffect::process(int frames) {
    const ProcessGuard guard(this);
    if (!guard.enter) return;
    mergeAudio(frames);
    mergeMIDI(frames);
    eachOwnEvent(
        this, inPort(), frames, [this](int count, int offset) { subProcess(count, offset); },
        [this](const CMIDIBytes* e) { doMapping(e); });
}

void CEffect::subProcess(int frames, int offset) {
    const CInputChannel* in = input();
    const COutputChannel* out = output();
    const bool on = enabled;
    const CEffectProg* prog = getProg();
    if (!in || !out || (on && !prog)) return;
    const float to = on ? 1.0f : 0.0f;
    if (heard < 0.0f || !prog) heard = to;
    const bool fades = heard != to;
    const bool ran = (on || fades) && prog && runChain(*prog, frames, offset);
    if (fades && ran) return fade(to, frames, offset);
    heard = to;
    std::copy_n(ran ? host->scratch().left.data() : in->bufL + offset, frames, out->bufL + offset);
    std::copy_n(ran ? host->scratch().right.data() : in->bufR + offset, frames, out->bufR + offset);
}

/// What the chain has left takes the place of the input, or gives it back.
void CEffect::fade(float to, int frames, int offset) {
    const float step = 1.0f / float(std::max(1, host->framesInMs * PlanFade::ms));
    const float* left = host->scratch().left.data();
    const float* right = host->scratch().right.data();
    const CInputChannel* in = input();
    const COutputChannel* ch = output();
    for (int i = 0, at = offset; i < frames; ++i, ++at) {
        heard = to > heard ? std::min(heard + step, to) : std::max(heard - step, to);
        ch->bufL[at] = in->bufL[at] + (left[i] - in->bufL[at]) * heard;
        ch->bufR[at] = in->bufR[at] + (right[i] - in->bufR[at]) * heard;
    }
}

std::optional<MacroStyle> CEffect::macroStyle(int macro) {
    if (macro < 0 || macro >= macroCount) return std::nullopt;
    return looks.of(macro);
}

bool CEffect::followsKey() const {
    const auto* prog = programs().items(curProg);
    if (prog)
        for (const auto* fx : prog->effects)
            if (fx->type == fxCompressor || fx->type == fxGate) return true;
    return false;
}

void CEffect::giveKey(CFX& fx, int offset) const {
    KeySound sound;
    if (!key.cables.empty()) sound = {key.channel.bufL + offset, key.channel.bufR + offset};
    if (fx.type == fxCompressor) static_cast<CCompressor&>(fx).key = sound;
    if (fx.type == fxGate) static_cast<CGate&>(fx).key = sound;
}

/// Leaves the sound in the first two scratch buffers; false when no effect is on.
bool CEffect::runChain(const CEffectProg& prog, int frames, int offset) {
    const bool settles = host->clock->ends(pieceStart(this) + offset + frames);
    float* left = host->scratch().left.data();
    float* right = host->scratch().right.data();
    std::fill_n(left, frames, 0.0f);
    std::fill_n(right, frames, 0.0f);
    bool ran = false;
    const float tempo = host->plans->timeOf(this).bpm;
    for (auto* fx : prog.effects) {
        if (!fx->enabled || !isEffectKind(fx->type)) continue;
        fx->tempo = tempo;
        giveKey(*fx, offset);
        fx->settles = settles;
        if (ran)
            fx->process(left, right, left, right, frames);
        else
            fx->process(input()->bufL + offset, input()->bufR + offset, left, right, frames);
        ran = true;
    }
    return ran;
}

// Parameters.

void CEffect::doMapping(const CMIDIBytes* event) {
    if (event->param == paramPower) enable(asRound(double(event->value)) > 0);
    if (event->param == paramWet || event->param >= 0) setParam(event->param, event->value);
}

void CEffect::setParam(int index, ToStore<float> value) {
    if (index == paramPower) enable(value > 0.0f);
    if (index == paramWet) wet = fLimit(value, 0.0f, 1.0f);
    const RackSetting moved = rackSettingOf(*this, index);
    if (moved.fx)
        moved.setting->kind.set(moved.fx, moved.setting->index,
                                {moved.setting->atShare(double(float(value)))});
}

/// In their own unit, which a share may not hold exactly.
void CEffect::listParam(int index, std::vector<StoredValue>& parts) {
    const RackSetting moved = rackSettingOf(*this, index);
    if (moved.fx) parts.push_back(moved.setting->of(moved.fx));
}

CStr CEffect::paramName(int index) {
    if (index == paramPower) return "Power";
    if (index == paramWet) return "Wet level";
    const RackSetting moved = rackSettingOf(*this, index);
    return moved.fx ? moved.fx->id + ": " + moved.setting->name() : CComp::paramName(index);
}

CStr CEffect::paramText(int index) {
    if (index == paramPower) return enabled ? "On" : "Off";
    if (index == paramWet) return percentUnit.text(wet);
    const RackSetting moved = rackSettingOf(*this, index);
    if (!moved.fx) return CStr();
    return moved.setting->text(moved.fx, moved.setting->of(moved.fx).get()[0]);
}

const ParamUnit* CEffect::paramUnit(int index) {
    static const ParamUnit power{[](float share) { return CStr(share > 0.0f ? "On" : "Off"); },
                                 switchUnit.share};
    return index == paramPower ? &power : nullptr;
}

float CEffect::param(int index) {
    if (index == paramPower) return enabled ? 1.0f : 0.0f;
    if (index == paramWet) return wet;
    const RackSetting moved = rackSettingOf(*this, index);
    if (!moved.fx) return 0.0f;
    return float(moved.setting->shareOf(moved.setting->of(moved.fx).get()[0]));
}

// Programs.

CEffectProg* CEffect::addProg(int kind, CUndo* step) {
    auto* prog = new CEffectProg;
    CFX* fx = makeNewEffect(kind, host->rate, host->frames);
    prog->id = fx->id;
    prog->effects.add(fx);
    if (step)
        step->asAdd(prog, &progs);
    else
        progs.add(prog);
    return prog;
}

CFX* CEffect::addEffect(CEffectProg* prog, int kind, CUndo* step, int index) {
    CFX* fx = makeNewEffect(kind, host->rate, host->frames);
    step->asAdd(fx, &prog->effects, index);
    return fx;
}

void CEffect::perform(CUndoItem* item, int) {
    const CObject* prog = item->object;
    if (prog && prog->category == categoryEffectProg) followProgram(this, *item);
}

CStr CEffect::getProgName(int index) {
    const auto* prog = programs().items(index);
    return prog ? prog->id : CStr();
}

void CEffect::setProgName(int index, const CStr& name) {
    if (auto* prog = programs().items(index)) prog->id = name;
}

// Files.

void CEffect::write(CStream* stream) {
    writeIntBlock(stream, "progi", curProg);
    for (auto* prog : programs()) saveProg(stream, prog);
    writeMacros(stream, *this);
    const auto style = [this](int i) { return looks.of(i); };
    if (!anyMacroStyle(style)) return;
    const OpenBlock block(stream, "macrolooks");
    writeMacroStyles(stream, style);
}

void CEffect::saveProg(CStream* stream, CEffectProg* prog) {
    writeEffectProg(stream, *prog);
}

void CEffect::read(CStream* stream, int end) {
    RackContent content(host->rate, host->frames);
    content.read(stream, end);
    CList old;
    {
        const GraphHold hold(host);
        moveAll(progs, old);
        moveAll(content.progs, progs);
        curProg = asMinMax(content.progIndex, 0, std::max(0, progs.getCount() - 1));
    }
    deleteAll<CEffectProg>(old);
    takeMacros(*this, content.macros);
    looks = content.looks;
    notices.raise(CompNotice::program);
}

void CEffect::openProg(const CStr& path) {
    CFileStream stream(path, 0);
    openFromStream(&stream);
}

void CEffect::openFromStream(CStream* stream) {
    RackContent content(host->rate, host->frames);
    content.read(stream, stream->getSize());
    const int count = content.progs.getCount();
    if (count == 0) return;
    CUndo* step = host->undoStart("Open", this, {.comp = CompNotice::program});
    step->asInt(curProg.address()); // undone last
    for (auto* prog : programs()) step->asRemove(prog, &progs);
    step->asAddAll(content.progs, &progs);
    step->asInt(curProg.address()); // redone last
    host->undoEnd(step, true);
    setProg(asMinMax(content.progIndex, 0, count - 1));
}
