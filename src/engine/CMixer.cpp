#include "engine/CMixer.h"

#include "base/CStream.h"

namespace {

constexpr int intBytes = 4;

/// A string that lies whole in front of stream position `end`; empty when it does not.
CStr readStrWithin(CStream* stream, int end) {
    const int64_t left = int64_t(end) - stream->getPos() - intBytes;
    if (left < 0) return "";
    const int length = stream->readInt();
    if (length < 0 || length > left) return "";
    stream->seek(-intBytes, seekCurrent);
    return stream->readStr();
}

/// Reads the head of the next item; false at the end of the block, and for an item that is empty or
/// does not fit in.
bool nextItem(CStream* stream, int end, CStr& name, int& itemEnd) {
    name = readStrWithin(stream, end);
    if (name.empty() || int64_t(end) - stream->getPos() < intBytes) return false;
    const int size = stream->readInt();
    if (size < 1 || size > int64_t(end) - stream->getPos()) return false;
    itemEnd = stream->getPos() + size;
    return true;
}

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
    CStr name;
    int itemEnd = 0;
    while (nextItem(stream, end, name, itemEnd)) {
        readItem(stream, name, itemEnd);
        stream->seek(itemEnd, seekStart);
    }
    stream->seek(end, seekStart);
    update(updateProgram);
}

void CMixer::readItem(CStream* stream, const CStr& name, int itemEnd) {
    if (name == "prog") {
        auto* prog = new CMixProg;
        prog->id = readStrWithin(stream, itemEnd);
        progs.add(prog);
        return;
    }
    if (itemEnd - stream->getPos() < intBytes) return;
    if (name == "mxv") mxv = stream->readInt();
    if (name == "progi") curProg = stream->readInt();
    if (name == "sh" && progs.getCount() > 0) getProg(progs.getCount() - 1)->sh = stream->readInt();
}

void CMixer::write(CStream* stream) {
    stream->writeId("mxv", intBytes);
    stream->writeInt(mxv);
    stream->writeId("progi", intBytes);
    stream->writeInt(curProg);
    for (auto* prog : each<CMixProg>(progs)) {
        stream->writeId("prog", prog->id.length() + intBytes);
        stream->writeStr(prog->id);
        stream->writeId("sh", intBytes);
        stream->writeInt(prog->sh);
    }
}
