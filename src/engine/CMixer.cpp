#include "engine/CMixer.h"

#include "base/BlockView.h"
#include "base/Numbers.h"
#include "base/OpenBlock.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/MixScene.h"
#include "engine/ProgramEdits.h"

#include <algorithm>

namespace {

constexpr int intBytes = 4;

} // namespace

CMixProg::CMixProg() {
    id = "program";
}

CMixProg* CMixProg::copy() const {
    auto* twin = new CMixProg;
    twin->id = id;
    return twin;
}

CMixer::CMixer(CQV* root) : CComp(root) {
    id = "Mixer";
}

CMixer::~CMixer() {
    deleteAll(scenes);
}

void CMixer::init() {
    progs.add(new CMixProg);
}

void CMixer::clear() {
    while (CMixProg* prog = getProg(0)) {
        progs.del(0);
        delete prog;
    }
    deleteAll(scenes);
}

ListView<CMixProg> CMixer::programs() const {
    return listAs<CMixProg>(progs);
}

CMixProg* CMixer::getProg(int index) {
    return programs().items(index == -1 ? int(curProg) : index);
}

CStr CMixer::getProgName(int index) {
    const CMixProg* prog = index < 0 ? nullptr : getProg(index);
    return prog ? prog->id : CStr();
}

void CMixer::perform(CUndoItem* item, int) {
    followProgram(this, *item);
    notices.raise(CompNotice::program);
}

// Edits.

void CMixer::insertProg(CMixProg* prog, const CStr& title) {
    CUndo* step = host->undoStart(title, this);
    step->asInt(curProg.address()); // undone last
    const int at = progs.getCount();
    step->asAdd(prog, &progs);
    step->asInt(curProg.address()); // redone last
    host->undoEnd(step, true);
    setProg(at);
}

void CMixer::addProg() {
    insertProg(new CMixProg, "Add program");
}

void CMixer::duplicateProg() {
    const CMixProg* now = getProg(-1);
    if (!now) return;
    CMixProg* twin = now->copy();
    twin->sh = int(now->sh);
    insertProg(twin, "Duplicate program");
}

void CMixer::deleteProg() {
    removeProgram(this, curProg);
}

void CMixer::renameProg(const CStr& name) {
    renameProgram(this, curProg, name);
}

// Scenes.

CMixScene* CMixer::sceneAt(int index) const {
    return scenes.items(index);
}

void CMixer::addScene() {
    auto* scene = new CMixScene;
    scene->id = "Scene " + asStr(scenes.getCount() + 1);
    scene->take(host);
    CUndo* step = host->undoStart("Add scene", this);
    step->asAdd(scene, &scenes);
    host->undoEnd(step, true);
}

void CMixer::updateScene(CMixScene* scene) {
    const int at = scenes.indexed(scene);
    if (at < 0) return;
    CMixScene* now = scene->copy();
    now->take(host);
    CUndo* step = host->undoStart("Update scene", this);
    step->asRemove(scene, &scenes);
    step->asAdd(now, &scenes, at);
    host->undoEnd(step, true);
}

void CMixer::deleteScene(CMixScene* scene) {
    if (!scenes.contains(scene)) return;
    CUndo* step = host->undoStart("Delete scene", this);
    step->asRemove(scene, &scenes);
    host->undoEnd(step, true);
}

void CMixer::renameScene(CMixScene* scene, const CStr& name) {
    if (!scenes.contains(scene) || scene->id == name) return;
    CUndo* step = host->undoStart("Rename", this);
    step->asName(&scene->id);
    scene->id = name;
    host->undoEnd(step, true);
}

void CMixer::bindScenes() {
    for (auto* scene : scenes) scene->bind(host);
}

void CMixer::read(CStream* stream, int end) {
    clear();
    eachBlock(stream, end, [this](const CStr& name, BlockView& item) { readItem(item, name); });
    curProg = std::clamp(int(curProg), 0, std::max(progs.getCount() - 1, 0));
    notices.raise(CompNotice::program);
}

void CMixer::readItem(BlockView& item, const CStr& name) {
    if (!item.has(intBytes)) return;
    if (name == "scene") {
        auto* scene = new CMixScene;
        scene->read(item);
        scenes.add(scene);
    } else if (name == "prog") {
        auto* prog = new CMixProg;
        prog->id = item.readStr();
        progs.add(prog);
    } else if (name == "sh") {
        if (auto* prog = programs().last()) prog->sh = item.readInt();
    } else if (name == "mxv") {
        mxv = item.readInt();
    } else if (name == "progi") {
        curProg = item.readInt();
    }
}

void CMixer::write(CStream* stream) {
    writeIntBlock(stream, "mxv", mxv);
    writeIntBlock(stream, "progi", curProg);
    for (auto* prog : programs()) {
        stream->writeId("prog", prog->id.length() + intBytes);
        stream->writeStr(prog->id);
        writeIntBlock(stream, "sh", prog->sh);
    }
    for (const auto* scene : scenes) {
        const OpenBlock block(stream, "scene");
        scene->write(stream, host);
    }
}
