#include "base/LoadBudget.h"
#include "base/OpenBlock.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/songfile/FieldReading.h"
#include "sequencer/songfile/SongReading.h"
#include "sequencer/songfile/SongWriting.h"

// Lanes.

namespace {

constexpr int laneBytes = 14;       ///< of a lane behind its name
constexpr int automationBytes = 37; ///< further ones of automation
constexpr int extraBytes = 8;
constexpr int noSlot = -1;
constexpr int laneRoom = 384; ///< about what a lane takes

void readAutomation(SongReading& r) {
    const int target = r.in.readByte();
    const int slot = r.in.readInt();
    const LaneLink link = LaneLink::read(r.in);
    if (!r.lane) return;
    r.lane->target = target;
    r.lane->slot = slot >= 0 && slot < maxSlots ? slot : noSlot;
    if (target == targetParam) r.links->lanes.push_back({r.lane, link});
}

bool readLane(SongReading& r, int) {
    CStr name;
    r.lane = nullptr;
    if (!r.in.readText(name) || !r.in.has(laneBytes)) return false;
    const int flags = r.in.readByte(), visible = readSwitch(r.in);
    const int height = readLimited(r.in, 1, mostPixels);
    const int kind = r.in.readInt(), param = r.in.readInt();
    const bool automation = kind == laneAutomation;
    if (automation && !r.in.has(automationBytes)) return false;
    if (r.track && LoadBudget::take("lanes", laneRoom)) {
        r.lane = new CSubTrack(name, LaneKind(kind));
        r.lane->flags = unsigned(flags);
        r.lane->visible = (unsigned char)visible;
        r.lane->height = height;
        r.lane->param = param;
        r.track->subTracks.add(r.lane);
    }
    if (automation) readAutomation(r);
    return true;
}

bool readBypass(SongReading& r, int) {
    if (!r.in.has(extraBytes)) return false;
    const int bypass = readSwitch(r.in);
    r.skip(extraBytes - 1);
    if (r.lane) r.lane->bypass = (unsigned char)bypass;
    return true;
}

constexpr SongBlock blocks[] = {{"sub", readLane}, {"subex", readBypass}};

} // namespace

std::span<const SongBlock> laneBlocks() {
    return blocks;
}

void writeLane(SongWriting& w, CSubTrack* lane) {
    CStream& s = w.scratch();
    s.writeStr(lane->id);
    s.writeByte((unsigned char)lane->flags.load());
    s.writeByte(lane->visible);
    s.writeInt(lane->height);
    s.writeInt(lane->kind);
    s.writeInt(lane->param);
    if (lane->automation()) {
        s.writeByte((unsigned char)int(lane->target));
        s.writeInt(lane->slot);
        CObject* object = lane->target == targetParam ? lane->object.load() : nullptr;
        LaneLink::to(w.host, object).write(&s);
    }
    w.writeScratch("sub");
    w.out->writeId("subex", extraBytes);
    for (int v : {int(lane->bypass), 0, 0, 0}) w.out->writeByte((unsigned char)v);
    w.out->writeInt(0);
}
