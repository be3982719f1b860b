#include "engine/CMixer.h"

#include "base/BlockView.h"
#include "base/OpenBlock.h"

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

void CMixer::init() {
    progs.add(new CMixProg);
}

void CMixer::clear() {
    while (CMixProg* prog = getProg(0)) {
        progs.del(0);
        delete prog;
    }
}

CMixProg* CMixer::getProg(int index) {
    return static_cast<CMixProg*>(getProgram(index));
}

void CMixer::read(CStream* stream, int end) {
    clear();
    eachBlock(stream, end, [this](const CStr& name, BlockView& item) { readItem(item, name); });
    curProg = std::clamp(int(curProg), 0, std::max(progs.getCount() - 1, 0));
    notices.raise(CompNotice::program);
}

void CMixer::readItem(BlockView& item, const CStr& name) {
    if (!item.has(intBytes)) return;
    if (name == "prog") {
        auto* prog = new CMixProg;
        prog->id = item.readStr();
        progs.add(prog);
    } else if (name == "sh") {
        if (auto* prog = static_cast<CMixProg*>(progs.last())) prog->sh = item.readInt();
    } else if (name == "mxv") {
        mxv = item.readInt();
    } else if (name == "progi") {
        curProg = item.readInt();
    }
}

void CMixer::write(CStream* stream) {
    writeIntBlock(stream, "mxv", mxv);
    writeIntBlock(stream, "progi", curProg);
    for (auto* prog : each<CMixProg>(progs)) {
        stream->writeId("prog", prog->id.length() + intBytes);
        stream->writeStr(prog->id);
        writeIntBlock(stream, "sh", prog->sh);
    }
}
