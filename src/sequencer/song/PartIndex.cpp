#include "sequencer/song/PartIndex.h"

#include "base/CList.h"
#include "base/Numbers.h"
#include "sequencer/song/ClipTimes.h"

#include <algorithm>
#include <cassert>
#include <climits>

void PartIndex::reserve(int parts) {
    if (size_t(parts) <= room.capacity()) return;
    Room larger = roomFor(parts);
    takeRoom(larger);
}

PartIndex::Room PartIndex::roomFor(int parts) {
    constexpr size_t least = 8;
    Room made;
    made.reserve(size_t(parts) + size_t(parts) / 2 + least);
    return made;
}

void PartIndex::takeRoom(Room& other) {
    if (other.capacity() <= room.capacity()) return;
    other.assign(room.begin(), room.end());
    room.swap(other);
}

bool PartIndex::refresh(const ListOf<CPart>& parts) {
    if (valid && version == parts.version()) return false;
    valid = true;
    version = parts.version();
    room.clear();
    for (auto* part : parts) {
        assert(room.size() < room.capacity());
        if (room.size() == room.capacity()) break;
        const int pos = part->pos;
        room.push_back({part, part->usedSlots(), pos, saturate(pos + longestTicks(part)), 0});
    }
    // A step that moves parts puts their list in order later.
    if (!std::ranges::is_sorted(room, {}, &Entry::pos)) std::ranges::sort(room, {}, &Entry::pos);
    int reach = INT_MIN;
    for (Entry& entry : room) entry.reach = reach = std::max(reach, entry.end);
    return true;
}

size_t PartIndex::begunAt(double tick) const {
    const auto begun = [tick](const Entry& entry) { return entry.pos <= tick; };
    return size_t(std::ranges::partition_point(room, begun) - room.begin());
}

size_t PartIndex::firstOn(double tick) const {
    const auto over = [tick](const Entry& entry) { return entry.reach <= tick; };
    return size_t(std::ranges::partition_point(room, over) - room.begin());
}
