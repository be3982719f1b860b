#include "instruments/SamplerEdits.h"

#include "base/CStream.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "instruments/COSCSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/CWavSound.h"
#include "instruments/DrumKit.h"
#include "instruments/FactoryPrograms.h"
#include "instruments/SamplerContent.h"

namespace {

const StepEffects changed = {.comp = CompNotice::program};

/// Does `record(undo)` as one step.
template <class F>
void step(CSampler* sampler, const char* title, F&& record) {
    CUndo* undo = sampler->host->undoStart(title, sampler, changed);
    record(undo);
    sampler->host->undoEnd(undo, true);
}

template <class T>
void keep(CUndo* undo, Shared<T*>& current) {
    undo->asPtr(reinterpret_cast<void**>(current.address()));
}

/// The one beside an object that leaves a list.
template <class T>
T* neighbour(const CList& list, const T* leaver) {
    const int at = list.indexed(leaver);
    return static_cast<T*>(list.items(at + 1 < list.getCount() ? at + 1 : at - 1));
}

void enter(CUndo* undo, CLayer* layer, CSound* sound) {
    undo->asAdd(sound, &layer->sounds);
    keep(undo, layer->sound);
    layer->sound = sound;
}

} // namespace

void addDefaultProgram(CSampler* sampler) {
    step(sampler, "Add program", [&](CUndo* undo) {
        undo->asInt(sampler->curProg.address()); // undone last
        sampler->addProg(undo, sampler->createProg());
    });
}

void addFactoryProgram(CSampler* sampler, int index) {
    step(sampler, "Add program", [&](CUndo* undo) {
        CStr name;
        undo->asInt(sampler->curProg.address()); // undone last
        sampler->factoryProg(undo, index, name, true);
    });
}

void takeFactoryProgram(CSampler* sampler, int index) {
    CSynthProg* former = sampler->getProg();
    if (!former) return addFactoryProgram(sampler, index);
    const int place = sampler->curProg;
    step(sampler, "Take program", [&](CUndo* undo) {
        undo->asInt(sampler->curProg.address()); // undone last
        undo->asRemove(former, &sampler->progs);
        undo->asAdd(buildFactoryProg(sampler->host, sampler, index), &sampler->progs, place);
        undo->asInt(sampler->curProg.address()); // redone last
    });
    sampler->setProg(place);
}

namespace {

/// Of sounds that play files.
void listClips(CSynthProg& prog, ListOf<CSampleClip>& clips) {
    prog.eachSound([&](CSound* s) {
        if (s->type != typeWavSound) return;
        const auto* wav = static_cast<const CWavSound*>(s);
        for (int i = 0; i < wav->clipCount; i++) clips.addUnique(wav->clips[i]);
    });
}

/// The clips that nothing but a program that goes has played go with it.
void removeClips(CSampler* sampler, CSynthProg* leaver, CUndo* undo) {
    ListOf<CSampleClip> gone, stay;
    listClips(*leaver, gone);
    for (auto* prog : sampler->programs())
        if (prog != leaver) listClips(*prog, stay);
    for (auto* clip : gone)
        if (!stay.contains(clip) && sampler->clips.contains(clip))
            undo->asRemove(clip, &sampler->clips);
}

} // namespace

bool takeProgramFile(CSampler* sampler, const CStr& path) {
    CSynthProg* former = sampler->getProg();
    if (!former) return openPrograms(sampler, path);
    CFileStream file(path, 0);
    SamplerContent content(sampler->host, sampler);
    if (file.isOpen()) content.read(&file, file.getSize());
    auto* made = content.progs.getFirst();
    if (!made) return false;
    const int place = sampler->curProg;
    step(sampler, "Take program", [&](CUndo* undo) {
        undo->asInt(sampler->curProg.address()); // undone last
        removeClips(sampler, former, undo);
        undo->asRemove(former, &sampler->progs);
        while (auto* clip = content.clips.getFirst()) {
            content.clips.del(0);
            undo->asAdd(clip, &sampler->clips);
        }
        content.progs.del(0);
        undo->asAdd(made, &sampler->progs, place);
        undo->asInt(sampler->curProg.address()); // redone last
    });
    sampler->setProg(place);
    return true;
}

bool openPrograms(CSampler* sampler, const CStr& path) {
    const int before = sampler->progs.getCount();
    if (extractFileExt(path).upperCase() != ".SF2") {
        sampler->openBank(path);
        return sampler->progs.getCount() > before;
    }
    bool whole = false;
    step(sampler, "Open", [&](CUndo* undo) { whole = sampler->openSF2(path, undo); });
    return whole;
}

void setProgramMacro(CSampler* sampler, int macro, int controller, const CStr& name) {
    CSynthProg* prog = sampler->getProg();
    if (!prog || macro < 0 || macro >= progMacros) return;
    ProgMacro& to = prog->macros[macro];
    if (to.controller == controller && to.name == name) return;
    step(sampler, "Macro", [&](CUndo* undo) {
        undo->asInt(&to.controller);
        undo->asName(&to.name);
        to.controller = controller;
        to.name = name;
    });
}

CLayer* addLayer(CSampler* sampler) {
    CSynthProg* prog = sampler->getProg();
    if (!prog) return nullptr;
    auto* layer = new CLayer(prog);
    step(sampler, "Add layer", [&](CUndo* undo) {
        undo->asAdd(layer, &prog->layers);
        keep(undo, prog->layer);
        prog->layer = layer;
    });
    return layer;
}

void removeLayer(CSampler* sampler, CLayer* layer) {
    CSynthProg* prog = layer->prog;
    if (prog->layers.getCount() < 2) return;
    step(sampler, "Delete layer", [&](CUndo* undo) {
        undo->asRemove(layer, &prog->layers);
        if (prog->layer != layer) return;
        keep(undo, prog->layer);
        prog->layer = neighbour(prog->layers, layer);
    });
}

CSound* addSynthSound(CSampler* sampler, CLayer* layer) {
    auto* sound = new COSCSound(layer, sampler->host);
    step(sampler, "Add sound", [&](CUndo* undo) { enter(undo, layer, sound); });
    return sound;
}

CSound* addSampleSound(CSampler* sampler, CLayer* layer, const CStr& path) {
    std::unique_ptr<CSampleClip> clip = openClip(path);
    if (!clip) return nullptr;
    auto* sound = new CWavSound(layer, sampler->host);
    sound->addSample(clip.get());
    step(sampler, "Add sound", [&](CUndo* undo) {
        undo->asAdd(clip.release(), &sampler->clips);
        enter(undo, layer, sound);
    });
    return sound;
}

bool replaceSample(CSampler* sampler, CSound* sound, const CStr& path) {
    std::unique_ptr<CSampleClip> clip = openClip(path);
    if (!clip || sound->type != typeWavSound) return false;
    auto* wav = static_cast<CWavSound*>(sound);
    if (wav->clipCount < 1) return false;
    step(sampler, "Replace sample", [&](CUndo* undo) {
        keep(undo, wav->clips[0]);
        wav->clips[0].storeRelease(clip.get());
        undo->asAdd(clip.release(), &sampler->clips);
        undo->asName(&wav->id);
        wav->id = extractFileName(path);
    });
    return true;
}

void removeSound(CSampler* sampler, CLayer* layer, CSound* sound) {
    step(sampler, "Delete sound", [&](CUndo* undo) {
        undo->asRemove(sound, &layer->sounds);
        if (layer->sound != sound) return;
        keep(undo, layer->sound);
        layer->sound = neighbour(layer->sounds, sound);
    });
}
