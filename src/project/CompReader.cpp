#include "project/CompReader.h"

#include "base/BlockSearch.h"
#include "base/LoadBudget.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CompBlocks.h"
#include "engine/ObjectKinds.h"
#include "engine/StripBlocks.h"
#include "plugins/CVST.h"
#include "project/ItemView.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int oldCompsKind = 2; ///< once for some of the host's components

/// About what a channel or port takes, and a component with what it begins with.
constexpr int channelBytes = 16 << 10, portBytes = 1 << 10;
constexpr int compBytes = 16 << 10, largeCompBytes = 80 << 10;

bool isLarge(int type) {
    return type == compSampler || type == compAudioOut || type == compSeq;
}

bool hasRoomForComp(const char* kind, size_t there, size_t most, int type) {
    return LoadBudget::take(kind, isLarge(type) ? largeCompBytes : compBytes, there, most);
}

/// Whether one more may join what a component and the whole file have; counts it then.
bool hasRoomForIO(const char* kind, const CList& ofComp, int& ofKind, int bytes) {
    const size_t most = ofComp.getCount() < CompReader::maxOfComp ? CompReader::maxOfKind : 0;
    if (!LoadBudget::take(kind, bytes, size_t(ofKind), most)) return false;
    ++ofKind;
    return true;
}

bool hasPortRoom(const CList& ofComp, int& ofKind) {
    return hasRoomForIO("ports", ofComp, ofKind, portBytes);
}

bool hasChannelRoom(const CList& ofComp, int& ofKind) {
    return hasRoomForIO("channels", ofComp, ofKind, channelBytes);
}

int readWidth(ItemView& item) {
    return std::clamp(item.readInt(), 1, 2);
}

template <class T>
T* link(T* made, CList& list) {
    list.add(made);
    return made;
}

} // namespace

const CompReader::Kind CompReader::kinds[] = {
    {"comp", ofNone, &CompReader::oldComp},
    {"comp2", ofNone, &CompReader::comp2},
    {"insert", ofStrip, &CompReader::oldInsert},
    {"insert2", ofStrip, &CompReader::insert2},
    {"min", ofComp, &CompReader::compInPort},
    {"mout", ofComp, &CompReader::compOutPort},
    {"ain", ofComp, &CompReader::compInput},
    {"aout", ofComp, &CompReader::compOutput},
    {"mini", ofInsert, &CompReader::insertInPort},
    {"mouti", ofInsert, &CompReader::insertOutPort},
    {"aini", ofInsert, &CompReader::insertInput},
    {"aouti", ofInsert, &CompReader::insertOutput},
    {"aoutCurCh", ofComp, &CompReader::currentOutput},
    {"hideChs", ofComp, &CompReader::folded},
    {"comped", ofComp, &CompReader::compEditor},
    {"compedi", ofInsert, &CompReader::insertEditor},
    {"strip", ofStrip, &CompReader::oldStrip},
    {"strip2", ofStrip, &CompReader::strip},
    {"soloSafe", ofStrip, &CompReader::soloSafe},
    {"eq", ofStrip, &CompReader::eq},
    {"eq2", ofStrip, &CompReader::eq2},
    {"sends", ofSource, &CompReader::sends},
    {"wet", ofInsert, &CompReader::wet},
};

CompReader::CompReader(CQV* root, GraphIndex& graph) : host(root), index(graph) {
    index.host.comp = host;
}

bool CompReader::has(Owner owner) const {
    if (owner == ofComp) return io;
    if (owner == ofStrip) return output && io != &index.host;
    if (owner == ofSource) return output && io->comp->listKind == listComps;
    return owner == ofNone || insert;
}

bool CompReader::readItem(const CStr& id, ItemView& item) {
    const Kind* kind = std::find_if(std::begin(kinds), std::end(kinds),
                                    [&id](const Kind& k) { return id == k.id; });
    if (kind == std::end(kinds)) return false;
    if (has(kind->owner))
        (this->*kind->read)(item);
    else
        item.skipRest();
    return true;
}

void CompReader::addNames(BlockNames& names) {
    for (const Kind& kind : kinds) names.add(kind.id);
}

/// Where a component of a file goes, null for nowhere; but for the host it is a new one.
CompIO* CompReader::place(int type, int listKind) {
    if (type == compQV) return &index.host;
    const bool bus = listKind == listSends;
    if (bus && type == compSeq) return nullptr;
    if (!bus && listKind != listComps && listKind != oldCompsKind) return nullptr;
    auto& list = bus ? index.sends : index.comps;
    const char* kind = bus ? "sends" : "components";
    if (!hasRoomForComp(kind, list.size(), bus ? maxSends : maxComps, type)) return nullptr;
    CList& kept = bus ? static_cast<CList&>(host->sends) : host->comps;
    CComp* c = link(newStoredComp(host, type), kept);
    c->listKind = bus ? listSends : listComps;
    return &list.emplace_back(CompIO{c, {}, {}, {}, {}});
}

void CompReader::fill(CComp* c, ItemView& item, const CompHead& head) {
    applyHead(c, head);
    c->read(&item, saturate(item.getSize()));
    item.tooShort = false; // what is missing in its own content is the component's affair
    if (const auto* plugin = compAs<CVST>(c); plugin && !plugin->opened())
        notLoaded.push_back(c->id);
}

void CompReader::readComp(ItemView& item, bool full) {
    io = nullptr;
    output = nullptr;
    insert = nullptr;
    const CompHead head = readCompHead(&item, full);
    if (item.tooShort) return;
    io = place(head.type, head.listKind);
    if (io)
        fill(io->comp, item, head);
    else
        item.skipRest();
}

void CompReader::readInsert(ItemView& item, bool full) {
    insert = nullptr;
    const CompHead head = readCompHead(&item, full);
    if (item.tooShort) return;
    if (head.type == compSeq || !hasRoomForComp("inserts", size_t(inserts), maxOfKind, head.type))
        return item.skipRest();
    ++inserts;
    insert = link(newStoredComp(host, head.type), output->inserts);
    insert->listKind = listInsert;
    insert->ownerChannel = output;
    fill(insert, item, head);
}

// Ports and channels.

void CompReader::compInPort(ItemView&) {
    CComp* c = io->comp;
    if (hasPortRoom(c->inPorts, inPorts))
        io->inPorts.push_back(link(new CInputPort(c), c->inPorts));
}

void CompReader::compOutPort(ItemView&) {
    CComp* c = io->comp;
    if (hasPortRoom(c->outPorts, outPorts))
        io->outPorts.push_back(link(new COutputPort(c), c->outPorts));
}

void CompReader::compInput(ItemView& item) {
    CComp* c = io->comp;
    const int width = readWidth(item);
    if (!hasChannelRoom(c->inputs, inputs)) return;
    io->inputs.push_back(link(new CInputChannel(c), c->inputs));
    io->inputs.back()->channels = width;
}

void CompReader::compOutput(ItemView& item) {
    CComp* c = io->comp;
    const int width = readWidth(item);
    insert = nullptr;
    output = nullptr;
    if (!hasChannelRoom(c->outputs, outputs)) return;
    output = link(new COutputChannel(c), c->outputs);
    output->channels = width;
    io->outputs.push_back(output);
}

void CompReader::insertInPort(ItemView&) {
    if (hasPortRoom(insert->inPorts, inPorts)) link(new CInputPort(insert), insert->inPorts);
}

void CompReader::insertOutPort(ItemView&) {
    if (hasPortRoom(insert->outPorts, outPorts)) link(new COutputPort(insert), insert->outPorts);
}

void CompReader::insertInput(ItemView& item) {
    const int width = readWidth(item);
    if (!hasChannelRoom(insert->inputs, inputs)) return;
    link(new CInputChannel(insert), insert->inputs)->channels = width;
}

void CompReader::insertOutput(ItemView& item) {
    const int width = readWidth(item);
    if (!hasChannelRoom(insert->outputs, outputs)) return;
    link(new COutputChannel(insert), insert->outputs)->channels = width;
}

// What is set of them.

void CompReader::currentOutput(ItemView& item) {
    io->comp->curOutput = item.readInt();
}

void CompReader::folded(ItemView& item) {
    io->comp->hideChs = item.readInt();
}

void CompReader::oldStrip(ItemView& item) {
    readOldStrip(&item, output);
}

void CompReader::strip(ItemView& item) {
    readStrip(&item, output);
}

void CompReader::soloSafe(ItemView& item) {
    output->soloSafe = item.readInt() != 0 ? 1 : 0;
}

void CompReader::eq(ItemView& item) {
    readEq(&item, output);
}

void CompReader::eq2(ItemView& item) {
    readEq2(&item, output);
}

void CompReader::sends(ItemView& item) {
    readSends(&item, output, saturate(item.getSize()));
}

void CompReader::wet(ItemView& item) {
    const float v = item.readFloat();
    insert->wet = std::isfinite(v) ? fLimit(v, 0.0f, 1.0f) : 1.0f;
}

void readEditorStruct(ItemView& item, CEditorStruct& e) {
    for (int* v :
         {&e.left, &e.top, &e.width, &e.height, &e.visible, &e.maximized, &e.page, &e.pageItem})
        *v = item.readInt();
}
