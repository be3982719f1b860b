#include "engine/CompBlocks.h"

#include "base/CStream.h"
#include "base/Numbers.h"
#include "engine/CKeptComp.h"

namespace {

constexpr int mostPlace = 32767; ///< of a component in the graph, pixels
constexpr unsigned busyBit = 16; ///< once a state of processing; nobody sets it any more

int typeInFiles(const CComp* c) {
    const auto* kept = dynamic_cast<const CKeptComp*>(c);
    return kept ? kept->storedType : c->type;
}

} // namespace

void writeCompChunk(CStream* stream, CComp* c, int listKind, const CStr& id) {
    c->saving();
    stream->writeStr(id);
    const int64_t sizeAt = stream->getPos();
    stream->writeInt(0);
    for (const int v : {c->category, typeInFiles(c), listKind})
        stream->writeByte(static_cast<unsigned char>(v));
    stream->writeInt(c->posX);
    stream->writeInt(c->posY);
    stream->writeStr(c->id);
    stream->writeInt(c->enabled);
    stream->writeInt(int(c->flags.load() & ~busyBit));
    stream->writeInt(0);
    stream->writeInt(0);
    c->write(stream);
    stream->writeBlockSize(sizeAt);
}

CompHead readCompHead(CStream* stream, bool full) {
    CompHead head;
    head.category = stream->readByte();
    head.type = stream->readByte();
    head.listKind = stream->readByte();
    head.posX = asMinMax(stream->readInt(), 0, mostPlace);
    head.posY = asMinMax(stream->readInt(), 0, mostPlace);
    head.id = stream->readStr();
    if (!full) return head;
    head.enabled = stream->readInt() ? 1 : 0;
    head.flags = unsigned(stream->readInt()) & ~busyBit;
    stream->readInt();
    stream->readInt();
    return head;
}

void applyHead(CComp* c, const CompHead& head) {
    c->posX = head.posX;
    c->posY = head.posY;
    c->id = head.id;
    c->enabled = head.enabled;
    c->flags = head.flags;
}

CComp* newStoredComp(CQV* root, int type) {
    CComp* c = createComp(root, categoryComp, static_cast<unsigned char>(type));
    if (c->type != compPlain || type == compPlain) return c;
    delete c;
    return new CKeptComp(root, type);
}

CComp* readCompChunk(CQV* root, CStream* stream, int end) {
    const CompHead head = readCompHead(stream, true);
    CComp* c = newStoredComp(root, head.type);
    applyHead(c, head);
    c->read(stream, end);
    return c;
}
