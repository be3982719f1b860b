#include "project/MapBlocks.h"

#include "base/CStream.h"
#include "engine/CMap.h"
#include "engine/CQV.h"
#include "engine/ControlSource.h"
#include "project/ItemView.h"

#include <memory>

namespace {

/// What a map leads to, as files number it.
enum TargetKind : int {
    targetComp = 1,
    targetBus = 3,
    targetInsert = 4,
    targetChannel = 6,
    targetSend = 7,
};

constexpr int mapBytes = 48, progBytes = 20;
constexpr int highestController = 127, highestChannel = 16;

struct TargetRef {
    int kind = 0;
    int index[4] = {};
};

/// The numbers of a target in the host's lists; kind 0 when it has none.
TargetRef refOf(const CMap* map, const GraphIndex& index) {
    CObject* target = map->target;
    COutputChannel* owner = map->owner;
    const FilePlace* own = index.placeOf(target);
    if (own && own->list != fileHost) {
        const bool bus = own->list == fileSends;
        if (own->io < 0) return {bus ? targetBus : targetComp, {own->comp}};
        if (target->asType(categoryChannel, channelOutput))
            return {targetChannel, {bus ? 1 : 0, own->comp, own->io}};
        return {};
    }
    const FilePlace* held = owner ? index.placeOf(owner) : nullptr;
    if (!held || held->list == fileHost) return {};
    const bool bus = held->list == fileSends;
    const int insert = owner->inserts.indexed(target);
    if (insert >= 0) return {targetInsert, {bus ? 1 : 0, held->comp, held->io, insert}};
    for (int i = 0; i < maxSends && !bus; ++i)
        if (owner->sendLevels[i] == target) return {targetSend, {held->comp, held->io, i}};
    return {};
}

void writeMap(CStream* stream, const CMap* map, const GraphIndex& index) {
    const TargetRef ref = refOf(map, index);
    if (!ref.kind) return;
    stream->writeId("cmap", mapBytes);
    stream->writeInt(ref.kind);
    for (const int i : ref.index) stream->writeInt(i);
    for (const int v : {map->ch.load(), map->param.load(), map->cc.load(), map->min.load(),
                        map->max.load(), map->mode.load(), 0})
        stream->writeInt(v);
}

COutputChannel* outputAt(GraphIndex& index, int list, int comp, int io) {
    CompIO* found = index.at(list, comp);
    return found && io >= 0 && size_t(io) < found->outputs.size() ? found->outputs[size_t(io)]
                                                                  : nullptr;
}

void aimAtComp(CMap& map, GraphIndex& index, int list, int comp) {
    if (CompIO* found = index.at(list, comp)) map.target = found->comp;
}

void aimAtInsert(CMap& map, COutputChannel* owner, int insert) {
    if (!owner) return;
    map.target = owner->inserts.items(insert);
    map.owner = owner;
    map.comp = owner->comp;
}

void aimAtSend(CMap& map, COutputChannel* owner, int send) {
    if (!owner || send < 0 || send >= maxSends) return;
    map.target = owner->sendLevels[send];
    map.owner = owner;
    map.comp = owner->comp;
}

void aim(CMap& map, const TargetRef& ref, GraphIndex& index) {
    const int* i = ref.index;
    const int list = i[0] == 1 ? fileSends : fileComps; // of the kinds that say so
    if (ref.kind == targetComp) aimAtComp(map, index, fileComps, i[0]);
    if (ref.kind == targetBus) aimAtComp(map, index, fileSends, i[0]);
    if (ref.kind == targetInsert) aimAtInsert(map, outputAt(index, list, i[1], i[2]), i[3]);
    if (ref.kind == targetSend) aimAtSend(map, outputAt(index, fileComps, i[0], i[1]), i[2]);
    if (ref.kind != targetChannel) return;
    COutputChannel* ch = outputAt(index, list, i[1], i[2]);
    map.target = ch;
    map.comp = ch ? ch->comp : nullptr;
}

bool within(int v, int low, int high) {
    return v >= low && v <= high;
}

bool hasLegalValues(const CMap& map) {
    return within(map.ch, 0, highestChannel) && within(map.cc, 0, mostSource) &&
           within(map.min, 0, highestController) && within(map.max, 0, highestController) &&
           map.param >= paramWet;
}

} // namespace

void writeMaps(CStream* stream, CQV* host, const GraphIndex& index) {
    for (auto* prog : host->maps) {
        stream->writeId("cm", prog->name.length() + progBytes);
        stream->writeStr(prog->name);
        stream->writeByte(static_cast<unsigned char>(prog->value));
        for (int i = 0; i < 3; ++i) stream->writeByte(0);
        for (int i = 0; i < 3; ++i) stream->writeInt(0);
        for (auto* map : prog->items) writeMap(stream, map, index);
    }
}

CMapProg* readMapProg(ItemView& item) {
    auto* prog = new CMapProg;
    prog->name = item.readStr();
    prog->value = item.readByte();
    for (int i = 0; i < 3; ++i) item.readByte();
    for (int i = 0; i < 3; ++i) item.readInt();
    return prog;
}

void readMap(ItemView& item, CMapProg* prog, GraphIndex& index) {
    TargetRef ref;
    ref.kind = item.readInt();
    for (int& i : ref.index) i = item.readInt();
    auto map = std::make_unique<CMap>();
    for (Shared<int>* v : {&map->ch, &map->param, &map->cc, &map->min, &map->max})
        *v = item.readInt();
    const int mode = item.readInt();
    if (mode > 0 && mode < mapModes) map->mode = mode;
    item.readInt();
    if (item.tooShort || !hasLegalValues(*map) || prog->full()) return;
    aim(*map, ref, index);
    if (map->target.load()) prog->items.add(map.release());
}
