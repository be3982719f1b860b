#include "project/CableBlocks.h"

#include "base/LoadBudget.h"
#include "base/OpenBlock.h"
#include "engine/CQV.h"
#include "project/ItemView.h"

namespace {

constexpr int cableBytes = 12, highestIndex = 255;
constexpr size_t maxCables = 4096;

void writeCable(CStream* stream, const char* id, const CIO* from, const CIO* to, bool muted,
                const GraphIndex& index) {
    const FilePlace *source = index.placeOf(from), *dest = index.placeOf(to);
    if (!source || !dest || source->io > highestIndex || dest->io > highestIndex) return;
    stream->writeId(id, cableBytes);
    writePlace(stream, *source);
    writePlace(stream, *dest);
    if (muted) writeIntBlock(stream, "cableMute", 1);
}

/// One end of a cable; `io` is a number without meaning when there is no component.
struct CableEnd {
    CompIO* comp;
    size_t io;
};

CableEnd readEnd(ItemView& item, GraphIndex& index) {
    const int list = static_cast<signed char>(item.readByte());
    const int comp = item.readInt();
    return {index.at(list, comp), size_t(item.readByte())};
}

template <class T>
T* pick(const std::vector<T*>& ios, size_t index) {
    return index < ios.size() ? ios[index] : nullptr;
}

} // namespace

void writeCables(CStream* stream, CComp* c, const GraphIndex& index) {
    for (auto* cable : c->audioCables)
        writeCable(stream, "ac", cable->fromChannel, cable->toChannel, cable->muted, index);
    for (auto* cable : c->midiCables)
        writeCable(stream, "mc", cable->fromPort, cable->toPort, cable->muted, index);
    for (auto* child : c->comps) writeCables(stream, child, index);
    if (c != c->host) return;
    for (auto* bus : c->host->sends) writeCables(stream, bus, index);
}

bool CableReader::isNew(const CIO* from, const CIO* to) {
    if (!from || !to || seen.count({from, to})) return false;
    if (seen.size() < maxCables) return seen.insert({from, to}).second;
    LoadBudget::leaveOut("cables");
    return false;
}

void CableReader::readAudio(ItemView& item) {
    newest = nullptr;
    const CableEnd from = readEnd(item, index), to = readEnd(item, index);
    if (item.tooShort || !from.comp || !to.comp) return;
    COutputChannel* source = pick(from.comp->outputs, from.io);
    CInputChannel* dest = pick(to.comp->inputs, to.io);
    if (!isNew(source, dest)) return;
    CComp* c = to.comp->comp;
    auto* cable = createAudioCable(c, source, dest);
    c->audioCables.add(cable);
    newest = cable;
}

void CableReader::readMIDI(ItemView& item) {
    newest = nullptr;
    const CableEnd from = readEnd(item, index), to = readEnd(item, index);
    if (item.tooShort || !from.comp || !to.comp) return;
    CMIDIQ* source = pick(from.comp->outPorts, from.io);
    CMIDIQ* dest = pick(to.comp->inPorts, to.io);
    if (!isNew(source, dest)) return;
    CComp* c = to.comp->comp;
    auto* cable = createMIDICable(c, source, dest);
    c->midiCables.add(cable);
    newest = cable;
}

void CableReader::readMute(ItemView& item) {
    if (newest) setCableMute(newest, item.readInt() != 0);
}
