#include "instruments/CSampler.h"

#include "base/CStream.h"
#include "base/LoadBudget.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/OpenBlock.h"
#include "common/fx/CDelay.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/ParamUnit.h"
#include "instruments/COSCSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CWavSound.h"
#include "instruments/FactoryPrograms.h"
#include "instruments/SamplerContent.h"
#include "instruments/SamplerFiles.h"
#include "instruments/Slices.h"
#include "instruments/SoundParams.h"

#include <algorithm>
#include <cassert>

namespace {

constexpr int kindArrives = 19; ///< tag of an undo item: a program that comes and becomes current
constexpr int undone = 2;       ///< `op` of `perform`

/// Swaps the contents of two lists without allocation.
void exchange(CList& a, CList& b) {
    const int count = a.getCount();
    while (void* p = b.getFirst()) a.move(&b, p, -1);
    for (int i = 0; i < count; i++) b.move(&a, a.getFirst(), -1);
}

} // namespace

CSampler::CSampler(CQV* root)
    : CComp(root), delays{EchoLine(CDelay::bufferFrames), EchoLine(CDelay::bufferFrames)} {
    id = "Synthesizer";
    type = compSampler;
}

CSampler::~CSampler() {
    deleteAll<CObject>(clips);
}

void CSampler::afteridle() {
    if (CSynthProg* prog = getProg()) prog->idle();
    CComp::afteridle();
}

void CSampler::start() {
    unsigned number = unsigned(host->comps.indexed(this)) << 8;
    for (auto* prog : programs()) prog->start(number++);
}

void CSampler::setFrames(int frames) {
    for (auto* prog : programs()) prog->setFrames(frames);
    CComp::setFrames(frames);
}

void CSampler::setRate(double rate) {
    CComp::setRate(rate);
    for (auto* prog : programs()) prog->setRate(float(rate));
}

CSynthProg* CSampler::getProg() {
    return programs().items(curProg);
}

CLayer* CSampler::getLayer() {
    CSynthProg* prog = getProg();
    return prog ? prog->layer.load() : nullptr;
}

// Parameters.

void CSampler::setParam(int index, ToStore<float> value) {
    if (index < 0 || index >= controllers) return;
    paramValues[index] = value;
    if (CSynthProg* prog = getProg())
        prog->eachSound([&](CSound* s) { setValue(s, s->ccMap[index], value); });
}

/// The sounds, which need not agree, and what the parameter itself tells: where it moves sounds the
/// first of these, so that setting it to where they stand already is no change.
void CSampler::listParam(int index, std::vector<StoredValue>& parts) {
    using Numbers = StoredValue::Numbers;
    static const StoredValue::Kind told = {
        nullptr,
        [](const CObject* o, int i) {
            auto* s = const_cast<CSampler*>(static_cast<const CSampler*>(o));
            return Numbers{double(soundParamShare(*s, i))};
        },
        [](CObject* o, int i, const Numbers& to) {
            static_cast<CSampler*>(o)->paramValues[i] = float(to[0]);
        },
        [](int i) { return i; }};
    if (index < 0 || index >= controllers) return;
    parts.push_back({&told, this, index});
    CSynthProg* prog = getProg();
    if (!prog) return;
    prog->eachSound([&](CSound* s) {
        const int target = s->ccMap[index];
        if (s->target(target)) parts.push_back(targetOf(s, target));
    });
}

int CSampler::getMacroParam(int index) {
    const CSynthProg* prog = getProg();
    return prog && index >= 0 && index < progMacros ? prog->macros[index].controller : -1;
}

void CSampler::setMacroParam(int index, int param) {
    CSynthProg* prog = getProg();
    if (prog && index >= 0 && index < progMacros) prog->macros[index].controller = param;
}

std::optional<MacroStyle> CSampler::macroStyle(int macro) {
    CSynthProg* prog = getProg();
    if (!prog || macro < 0 || macro >= progMacros) return std::nullopt;
    ProgMacro& m = prog->macros[macro];
    return MacroStyle{&m.name, &m.low, &m.high};
}

CStr CSampler::paramName(int index) {
    return soundParamName(*this, index);
}

CStr CSampler::paramText(int index) {
    const ParamUnit* unit = paramUnit(index);
    return unit ? unit->text(param(index)) : CStr();
}

const ParamUnit* CSampler::paramUnit(int index) {
    static constexpr ParamUnit controller{[](float share) { return asStrFormat(share, "%0.2f"); },
                                          [](double number) { return float(number); }};
    return index >= 0 && index < controllers ? &controller : nullptr;
}

float CSampler::param(int index) {
    return index >= 0 && index < controllers ? float(paramValues[index]) : 0.0f;
}

// Programs.

void CSampler::setProg(ToStore<int> index) {
    progChange = -1;
    CComp::setProg(index);
}

void CSampler::init() {
    createChannels();
    CStr name;
    const int count = factoryProg(nullptr, -1, name, false);
    for (int i = 0; i < count; i++) factoryProg(nullptr, i, name, true);
    notices.raise(CompNotice::program);
}

void CSampler::createChannels() {
    inPorts.add(new CInputPort(this));
    auto* channel = new COutputChannel(this);
    channel->channels = 2;
    outputs.add(channel);
}

CComp* CSampler::copy() {
    auto* twin = new CSampler(host);
    twin->copyData(this);
    twin->copyIO(this);
    return twin;
}

CStr CSampler::getProgName(int index) {
    const auto* prog = programs().items(index);
    return prog ? prog->id : CStr();
}

void CSampler::setProgName(int index, const CStr& name) {
    if (auto* prog = programs().items(index)) prog->id = name;
}

int CSampler::factoryProg(CUndo* undo, int index, CStr& name, bool build) {
    if (index == -1) return factoryCount;
    if (index < 0 || index >= factoryCount) return 0;
    name = factoryName(index);
    if (!build) return 1;
    CSynthProg* prog = buildFactoryProg(host, this, index);
    if (undo)
        addProg(undo, prog);
    else
        progs.add(prog);
    return 1;
}

void CSampler::addProg(CUndo* undo, CSynthProg* prog) {
    undo->asAdd(prog, &progs)->tag = kindArrives;
}

CSynthProg* CSampler::createProg() {
    auto* prog = new CSynthProg(host, this);
    CLayer* layer = prog->addLayer();
    auto* sound = new COSCSound(layer, host);
    sound->cutoff = 0.9f;
    sound->detune = 0.3f;
    sound->width = 0.2f;
    layer->addSound(sound);
    return prog;
}

void CSampler::perform(CUndoItem* item, int op) {
    CObject* object = item->object;
    if (!object || object->category != categorySampler) return;
    muteAll(object);
    if (object->type != typeSynthProg) return;
    const int last = progs.getCount() - 1;
    if (item->tag == kindArrives && op != undone)
        curProg = last;
    else
        curProg = asMinMax(curProg, 0, std::max(0, last));
    notices.raise(CompNotice::program);
}

void CSampler::del(CObject* object) {
    if (object && object->category == categorySampler) muteAll(object);
}

void CSampler::muteAll(CObject* object) {
    assert(mayRewire());
    for (CVoice& v : voices) {
        if (v.state != CVoice::sounding && v.seat == Seat::none) continue;
        const CSound* s = v.sound;
        if (s == object || s->layer == object || s->layer->prog == object) endVoice(&v);
    }
}

// Files.

void CSampler::saveProg(CStream* stream, CSynthProg* prog, const CList& clipList) {
    writeProgram(stream, prog, clipList);
}

void CSampler::write(CStream* stream) {
    writeFiletype(stream);
    for (auto* clip : clips) writeClip(stream, clip);
    writeIntBlock(stream, "mch", mch);
    writeIntBlock(stream, "progi", curProg);
    for (auto* prog : programs()) saveProg(stream, prog, clips);
    stream->writeId("options", optionBytes);
    stream->write(options, optionBytes);
}

void CSampler::writeToStream(CStream* stream, CSynthProg* prog) {
    ListOf<CSampleClip> used;
    prog->eachSound([&](CSound* s) {
        if (s->type != typeWavSound) return;
        auto* wav = static_cast<CWavSound*>(s);
        if (wav->clipCount > 0) used.addUnique(wav->clips[0]);
    });
    writeFiletype(stream);
    for (auto* clip : used) writeClip(stream, clip);
    saveProg(stream, prog, used);
}

void CSampler::complain(const SamplerContent& content) {
    if (content.cutOff) LoadBudget::noteDamage();
    if (content.badBlock.empty()) return;
    const CStr title = CStr("Error reading ") + id;
    const CStr text =
        CStr("Error reading block: ") + content.badBlock + " (" + asStr(content.badSize) + ")";
    if (LoadBudget::firstDamage())
        showMsg(nullptr, title, text);
    else
        showStr(title + ": " + text);
}

void CSampler::read(CStream* stream, int end) {
    SamplerContent content(host, this);
    content.read(stream, end);
    {
        GraphHold hold(host);
        allNotesOff();
        exchange(progs, content.progs);
        exchange(clips, content.clips);
        std::copy_n(content.options, optionBytes, options);
        mch = content.mch;
        curProg = asMinMax(content.progIndex, 0, std::max(0, progs.getCount() - 1));
    }
    notices.raise(CompNotice::program);
    complain(content);
}

void CSampler::openFromStream(CStream* stream) {
    SamplerContent content(host, this);
    content.read(stream, stream->getSize());
    const int firstNew = progs.getCount();
    CUndo* step = host->undoStart("Open", this, {.comp = CompNotice::program});
    const bool any = !content.progs.empty();
    step->asAddAll(content.clips, &clips);
    step->asAddAll(content.progs, &progs);
    if (any) step->asInt(curProg.address());
    host->undoEnd(step, true);
    if (any) setProg(firstNew);
    complain(content);
}

void CSampler::openBank(const CStr& path) {
    CFileStream stream(path, 0);
    openFromStream(&stream);
}
