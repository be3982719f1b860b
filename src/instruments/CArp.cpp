#include "instruments/CArp.h"

#include "base/CStream.h"
#include "base/Numbers.h"
#include "base/Random.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/ProgramEdits.h"
#include "instruments/ArpFiles.h"

#include <algorithm>

// What an arpeggiator is, apart from what it does in a block (ArpPlayback.cpp).

namespace {

/// Swaps the contents of two lists without allocation.
void exchange(CList& a, CList& b) {
    const int count = a.getCount();
    while (void* p = b.getFirst()) a.move(&b, p, -1);
    for (int i = 0; i < count; i++) b.move(&a, a.getFirst(), -1);
}

} // namespace

CArp::CArp(CQV* root)
    : CComp(root), noteOffs(std::make_unique<CMIDIQ>(this)),
      noteOffsTmp(std::make_unique<CMIDIQ>(this)) {
    id = "Arpeggiator";
    type = compArp;
}

CArp::~CArp() = default;

void CArp::init() {
    inPorts.add(new CInputPort(this));
    outPorts.add(new COutputPort(this));
    progs.add(new CArpProg);
}

void CArp::enable(ToStore<int> on) {
    CComp::enable(on);
    if (!on) ask(requestClear);
}

void CArp::sleep(int on) {
    CComp::sleep(on);
    if (!on) return;
    deleteAllVoices();
    noteOffs->clear();
    through.reset();
}

void CArp::perform(CUndoItem* item, int) {
    if (!item->touches(&progs)) return;
    deleteAllVoices();
    if (item->held()) static_cast<CArpProg*>(item->object)->removeAllKeys();
    followProgram(this, *item);
}

CComp* CArp::copy() {
    auto* twin = new CArp(host);
    twin->copyData(this);
    int i = 0;
    for (const auto* prog : programs()) twin->programs().items(i++)->copySettings(*prog);
    twin->copyIO(this);
    return twin;
}

CStr CArp::getProgName(int index) {
    const CProgram* prog = getProgram(index);
    return prog ? prog->id : CStr();
}

void CArp::setProgName(int index, const CStr& name) {
    if (CProgram* prog = getProgram(index)) prog->id = name;
}

ListView<CArpProg> CArp::programs() const {
    return listAs<CArpProg>(progs);
}

CArpProg* CArp::getProg() {
    return programs().items(curProg);
}

// Settings.

void CArp::setMode(ToStore<int> v) {
    CArpProg* prog = getProg();
    if (!prog) return;
    prog->setMode(v);
    if (prog->mode == arpRandom) {
        seed = unsigned(asTimeInMS());
        ask(requestSeed);
    }
    ask(requestClear);
}

void CArp::setOctaveRng(ToStore<int> v) {
    if (CArpProg* prog = getProg()) prog->setOctaves(v);
}

void CArp::setTransposeMode(ToStore<int> v) {
    if (CArpProg* prog = getProg()) prog->setTransposeMode(v);
}

void CArp::setGate(ToStore<float> v) {
    if (CArpProg* prog = getProg()) prog->setGate(v);
}

void CArp::setProb(ToStore<float> v) {
    if (CArpProg* prog = getProg()) prog->setProb(v);
}

void CArp::setLatch(ToStore<int> v) {
    latch = asMinMax(v, 0, 1);
    if (!latch) ask(requestRelease);
}

void CArp::ask(unsigned bits) {
    requests.fetchOr(bits);
    if (host->mustQueue()) return;
    const GraphHold hold(host);
    serveRequests();
}

void CArp::start() {
    chance.seed(unsigned(host->comps.indexed(this)));
}

void CArp::serveRequests() {
    const unsigned asked = requests.fetchAnd(requestSeed);
    if (asked & requestClear) deleteAllVoices();
    if (asked & requestRelease) releaseLatched();
}

/// Chance belongs to whoever plays, so this waits for a block.
void CArp::reseed() {
    if (requests.fetchAnd(~unsigned(requestSeed)) & requestSeed) chance.seed(seed);
}

// Files.

void CArp::read(CStream* stream, int end) {
    ArpContent content(*this);
    content.read(stream, end);
    if (content.progs.empty() && progs.empty()) content.progs.add(new CArpProg);
    {
        const GraphHold hold(host);
        deleteAllVoices();
        if (!content.progs.empty()) exchange(progs, content.progs);
        curProg = asMinMax(content.progIndex, 0, progs.getCount() - 1);
        latch = content.latch;
        ccGate = content.ccGate;
        ccSwing = content.ccSwing;
        enabled = content.enabled;
    }
    notices.raise(CompNotice::program);
}

bool CArp::openFromStream(CStream* stream) {
    ArpContent content(*this);
    content.read(stream, stream->getSize());
    if (content.progs.empty()) return false;
    CUndo* step = host->undoStart("Open", this, {.comp = CompNotice::program});
    step->asInt(curProg.address()); // undone last
    for (auto* prog : programs()) step->asRemove(prog, &progs);
    step->asAddAll(content.progs, &progs);
    step->asInt(curProg.address()); // redone last
    host->undoEnd(step, true);
    setProg(0);
    return true;
}

bool CArp::openProg(const CStr& path) {
    CFileStream stream(path, 0);
    return openFromStream(&stream);
}
