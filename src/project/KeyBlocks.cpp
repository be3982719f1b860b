#include "project/KeyBlocks.h"

#include "engine/CQV.h"
#include "engine/KeyInput.h"
#include "project/GraphIndex.h"
#include "project/ItemView.h"

namespace {

constexpr int keyBytes = 20, highestIndex = 255, ofItself = -1;

void writeKey(CStream* stream, const CAudioCable* cable, const CObject* to, int place,
              const GraphIndex& index) {
    const FilePlace *source = index.placeOf(cable->fromChannel), *dest = index.placeOf(to);
    if (!source || !dest || source->io > highestIndex || dest->io > highestIndex) return;
    stream->writeId("sidechain", keyBytes);
    writePlace(stream, *source);
    writePlace(stream, *dest);
    stream->writeInt(place);
    stream->writeInt(cable->muted);
}

/// A strip, or null; its component at least is in the file.
COutputChannel* readEnd(ItemView& item, GraphIndex& index, CompIO*& of) {
    const int list = static_cast<signed char>(item.readByte());
    of = index.at(list, item.readInt());
    const auto io = size_t(item.readByte());
    return of && io < of->outputs.size() ? of->outputs[io] : nullptr;
}

} // namespace

void writeKeys(CStream* stream, CQV* host, const GraphIndex& index) {
    eachKeyed(host, [&](CComp* keyed, const CKeyInput& key) {
        const COutputChannel* strip = keyed->ownerChannel;
        for (const auto* cable : key.cables)
            if (strip)
                writeKey(stream, cable, strip, strip->inserts.indexed(keyed), index);
            else
                writeKey(stream, cable, keyed, ofItself, index);
    });
}

void readKey(ItemView& item, GraphIndex& index) {
    CompIO *source = nullptr, *dest = nullptr;
    COutputChannel* from = readEnd(item, index, source);
    const COutputChannel* strip = readEnd(item, index, dest);
    const int place = item.readInt();
    const bool muted = item.readInt() != 0;
    if (item.tooShort || !from || !dest || from->comp->type == compAudioOut) return;
    CComp* keyed = dest->comp;
    if (place != ofItself) keyed = strip ? strip->inserts.items(place) : nullptr;
    CKeyInput* key = keyInputOf(keyed);
    if (!key || !key->cables.empty()) return;
    key->cables.add(makeKeyCable(keyed, from));
    setCableMute(static_cast<CObject*>(key->cables.getFirst()), muted);
}
