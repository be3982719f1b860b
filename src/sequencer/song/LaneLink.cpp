#include "sequencer/song/LaneLink.h"

#include "base/OpenBlock.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/ObjectKinds.h"
#include "sequencer/song/CSeq.h"

namespace {

/// Kinds of link. A number that is a mode stands for a component in that list.
enum LinkKind : int { linkInsert = 4, linkChannel = 6, linkSend = 7 };

/// Lists of components. 2 is another number for the first.
enum LinkMode : int { modeHost = 0, modeComps = 1, modeSends = 3, modeNone = -1 };

constexpr int gapBytes = 3; ///< behind each of the bytes
constexpr int unusedInts = 2;

int asMode(const CQV* host, const CComp* c) {
    if (c == host) return modeHost;
    if (host->comps.contains(c)) return modeComps;
    return host->sends.contains(c) ? modeSends : modeNone;
}

CComp* compAt(CQV* host, int mode, int index) {
    if (mode == modeHost || mode == modeNone) return host;
    if (mode == modeComps || mode == 2) return host->comps.items(index);
    if (mode == modeSends) return host->sends.items(index);
    return nullptr;
}

/// Visits the outputs of a component in the order of files, which for a sequencer is that of its
/// tracks.
template <class F>
void eachOutput(CComp* owner, F visit) {
    const auto visitAll = [&visit](CComp* from) {
        for (auto* channel : from->outputs) visit(channel);
    };
    auto* seq = compAs<CSeq>(owner);
    if (!seq) return visitAll(owner);
    for (auto* track : seq->tracks) visitAll(track);
}

int indexOf(CComp* owner, const COutputChannel* channel) {
    int index = 0, found = -1;
    eachOutput(owner, [&](COutputChannel* one) {
        if (one == channel) found = index;
        index++;
    });
    return found;
}

COutputChannel* channelAt(CQV* host, int mode, int index, int channel) {
    CComp* owner = compAt(host, mode, index);
    COutputChannel* found = nullptr;
    if (owner)
        eachOutput(owner, [&](COutputChannel* one) {
            if (channel-- == 0) found = one;
        });
    return found;
}

/// An object at `index` of a channel's inserts or sends.
LaneLink toChannelItem(CQV* host, LinkKind kind, int index, COutputChannel* channel) {
    LaneLink link;
    CComp* owner = channel->comp;
    link.kind = kind;
    link.first = index;
    link.second = indexOf(owner, channel);
    link.secondMode = asMode(host, owner);
    link.third = compToInt(host, owner);
    const bool found = index >= 0 && link.second >= 0 && link.secondMode != modeNone;
    return found ? link : LaneLink();
}

LaneLink toChannel(CQV* host, COutputChannel* channel) {
    LaneLink link;
    CComp* owner = channel->comp;
    link.kind = linkChannel;
    link.first = indexOf(owner, channel);
    link.firstMode = asMode(host, owner);
    link.second = compToInt(host, owner);
    return link.first >= 0 && link.firstMode != modeNone ? link : LaneLink();
}

LaneLink toComp(CQV* host, CComp* c) {
    LaneLink link;
    link.kind = asMode(host, c);
    link.first = compToInt(host, c);
    return link.kind == modeNone ? LaneLink() : link;
}

void writeMode(CStream* stream, int mode) {
    stream->writeByte((unsigned char)mode);
    for (int i = 0; i < gapBytes; i++) stream->writeByte(0);
}

int readMode(CStream& stream) {
    const int mode = static_cast<signed char>(stream.readByte());
    for (int i = 0; i < gapBytes; i++) stream.readByte();
    return mode;
}

} // namespace

LaneLink LaneLink::to(CQV* host, CObject* object) {
    if (!object) return {};
    if (COutputChannel* strip = asStrip(object)) return toChannel(host, strip);
    int index = -1;
    COutputChannel* owner = asStrip(host->objectToOwner(object, index));
    if (asSend(object)) return toChannelItem(host, linkSend, index, owner);
    CComp* comp = asComp(object);
    if (!comp) return {};
    return owner ? toChannelItem(host, linkInsert, index, owner) : toComp(host, comp);
}

CObject* LaneLink::resolve(CQV* host) const {
    if (*this == LaneLink()) return nullptr;
    switch (kind) {
    case linkChannel:
        return channelAt(host, firstMode, second, first);
    case linkSend: {
        COutputChannel* channel = channelAt(host, secondMode, third, second);
        return channel && first >= 0 && first < maxSends ? channel->sendLevels[first] : nullptr;
    }
    case linkInsert: {
        COutputChannel* channel = channelAt(host, secondMode, third, second);
        return channel ? channel->inserts.items(first) : nullptr;
    }
    default:
        return compAt(host, kind, first);
    }
}

LaneLink LaneLink::read(CStream& stream) {
    LaneLink link;
    link.kind = readMode(stream);
    link.first = stream.readInt();
    link.firstMode = readMode(stream);
    link.second = stream.readInt();
    link.secondMode = readMode(stream);
    link.third = stream.readInt();
    for (int i = 0; i < unusedInts; i++) stream.readInt();
    return link;
}

void LaneLink::write(CStream* stream) const {
    writeMode(stream, kind);
    stream->writeInt(first);
    writeMode(stream, firstMode);
    stream->writeInt(second);
    writeMode(stream, secondMode);
    stream->writeInt(third);
    writeZeros(stream, unusedInts);
}
