#include "instruments/ArpFiles.h"

#include "base/BlockView.h"
#include "base/Numbers.h"
#include "base/OpenBlock.h"
#include "instruments/CArp.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr int intBytes = int(sizeof(int));
/// The declared size of a "prog" lacks the name's length and the last seven words.
constexpr int declaredFields = 36;
constexpr int readFields = 9 * intBytes; ///< mode to triplets
constexpr int zeroWords = 7;

/// Hands a number to a setter, which clamps it; what is not finite leaves the default.
void readFloat(CStream& s, CArpProg& prog, void (CArpProg::*set)(ToStore<float>)) {
    const float v = s.readFloat();
    if (std::isfinite(v)) (prog.*set)(v);
}

void readFieldsOf(CStream& s, CArpProg& prog) {
    prog.setMode(s.readInt());
    prog.setOctaves(s.readInt());
    readFloat(s, prog, &CArpProg::setGate);
    readFloat(s, prog, &CArpProg::setProb);
    readFloat(s, prog, &CArpProg::setStepTicks);
    readFloat(s, prog, &CArpProg::setSwing);
    readFloat(s, prog, &CArpProg::setRndGate);
    readFloat(s, prog, &CArpProg::setRndVelocity);
    prog.setTriplets(s.readInt());
}

/// Older files have six zero words, newer seven; the length of a name that follows is never 0.
void skipZeroWords(CStream* stream, BlockView& view) {
    while (view.has(intBytes)) {
        const int64_t at = view.getPos();
        if (view.readInt() == 0) continue;
        stream->setPos(at);
        return;
    }
}

} // namespace

void writeProgram(CStream* s, const CArpProg& prog) {
    s->writeId("prog", prog.id.length() + declaredFields);
    s->writeStr(prog.id);
    s->writeInt(prog.mode);
    s->writeInt(prog.octaves);
    for (float v : {float(prog.gate), float(prog.prob), float(prog.stepTicks), float(prog.swing),
                    float(prog.rndGate), float(prog.rndVelocity)})
        s->writeFloat(v);
    s->writeInt(prog.triplets);
    writeZeros(s, zeroWords);
}

void CArp::write(CStream* stream) {
    writeIntBlock(stream, "enabled", enabled);
    writeIntBlock(stream, "latch", latch);
    writeIntBlock(stream, "ccgate", ccGate);
    writeIntBlock(stream, "ccswing", ccSwing);
    writeIntBlock(stream, "progi", curProg);
    for (auto* prog : programs()) writeProgram(stream, *prog);
}

ArpContent::ArpContent(const CArp& preset)
    : enabled(preset.enabled), latch(preset.latch), ccGate(preset.ccGate), ccSwing(preset.ccSwing) {
}

ArpContent::~ArpContent() {
    deleteAll<CArpProg>(progs);
}

void ArpContent::read(CStream* stream, int64_t end) {
    end = std::min(end, stream->getSize());
    BlockView view(stream, end);
    CStr name;
    int size = 0;
    while (readBlockHead(view, name, size)) {
        const int64_t next = view.getPos() + size;
        if (name == "prog") {
            if (!readProg(stream, view)) break;
            if (view.getPos() < next) stream->setPos(next);
            skipZeroWords(stream, view);
            continue;
        }
        if (size >= intBytes) {
            const int v = view.readInt();
            if (name == "enabled") enabled = asMinMax(v, 0, 1);
            if (name == "latch") latch = asMinMax(v, 0, 1);
            if (name == "ccgate") ccGate = asMinMax(v, -1, 127);
            if (name == "ccswing") ccSwing = asMinMax(v, -1, 127);
            if (name == "progi") progIndex = v;
        }
        stream->setPos(next);
    }
    if (view.left() > 0) LoadBudget::noteDamage();
    stream->setPos(end);
}

bool ArpContent::readProg(CStream* stream, BlockView& view) {
    if (!view.has(intBytes) || progs.getCount() >= mostProgs) return false;
    const int length = view.readInt();
    if (length < 0 || !view.has(int64_t(length) + readFields)) return false;
    auto prog = std::make_unique<CArpProg>();
    prog->id.resize(length);
    view.read(prog->id.buffer(), length);
    readFieldsOf(view, *prog);
    progs.add(prog.release());
    // The first six of the words that follow.
    stream->setPos(std::min(view.getPos() + 6 * intBytes, view.getSize()));
    return true;
}
