#include "arrange/DropPlan.h"

#include "base/Numbers.h"
#include "base/Paths.h"
#include "gui/Selections.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace {

constexpr int ownTrack = -1; ///< no track there is takes it

/// The kind of the track that takes a file; 0 where the file alone tells, or none is needed.
int kindFor(SongFile kind) {
    switch (kind) {
    case SongFile::audio:
        return trackAudio;
    case SongFile::midi:
    case SongFile::font:
    case SongFile::program:
        return trackMIDI;
    case SongFile::kit:
        return trackDrum;
    case SongFile::track:
        return ownTrack;
    default:
        return 0;
    }
}

bool hasTime(SongFile kind) {
    return kind == SongFile::audio || kind == SongFile::midi || kind == SongFile::clip;
}

/// Projects and themes are opened, wherever they come.
bool forTheProgram(const CStr& path) {
    const CStr ext = extractFileExt(path);
    return sameText(ext, ".qv") || sameText(ext, ".qvl");
}

class Planner {
public:
    Planner(CSeq* song, const std::vector<CSongTrack*>& shown, const DropTarget& where)
        : seq(song), rows(shown), target(where), next(where.tick) {}

    void add(const CStr& path, const FileFacts& facts) {
        BringPlace place{ontoOf(count), hasTime(facts.kind) ? next : target.tick, 0};
        if (target.stacked && !place.onto) place.row = count;
        count++;
        if (place.onto && place.onto->track->locked)
            plan.refusal = CStr("The track is locked: ") + place.onto->track->id;
        plan.files.push_back({path, place});
        const int ticks = hasTime(facts.kind) ? ticksOf(facts, place.tick) : 0;
        const CStr name = extractFileName(path), stem = changeFileExt(name, "");
        const int rowsOfIt = facts.channels > 2 ? facts.channels : 1;
        for (int i = 0; i < rowsOfIt; i++) {
            plan.boxes.push_back(boxOf(place, kindFor(facts.kind), i));
            DropBox& box = plan.boxes.back();
            box.ticks = ticks;
            box.sure = facts.known;
            box.name = rowsOfIt > 1 ? stem + " " + asStr(i + 1) : name;
        }
        if (!target.stacked && ticks > 0) next = limitTicks(int64_t(next) + ticks);
    }

    DropPlan plan;

private:
    /// Of several under each other each has the next row.
    CSongTrack* ontoOf(int index) const {
        if (!target.stacked || !target.onto) return target.onto;
        const auto first = std::find(rows.begin(), rows.end(), target.onto);
        return rows.end() - first > index ? first[index] : nullptr;
    }

    int ticksOf(const FileFacts& facts, int tick) const {
        const bool sound = facts.kind == SongFile::audio || facts.seconds > 0.0;
        if (sound && facts.known)
            return asMax(1, asInt(seq->framesToTicks(tick, facts.seconds * ticksRate, ticksRate)));
        return facts.known ? facts.ticks : barTicks;
    }

    DropBox boxOf(const BringPlace& place, int kind, int channel) {
        DropBox box;
        box.row = place.onto;
        box.tick = place.tick;
        const bool suits = place.onto && (!kind || place.onto->track->kind == kind);
        if (suits && channel == 0) return box;
        const auto key = std::tuple(place.onto, place.row, kind, channel);
        const auto [entry, fresh] = slots.try_emplace(key, newRows[place.onto]);
        if (fresh) newRows[place.onto]++;
        box.below = entry->second;
        return box;
    }

    static constexpr int ticksRate = 48000; ///< frames a second that lengths are worked out in
    CSeq* seq;
    const std::vector<CSongTrack*>& rows;
    const DropTarget& target;
    int next;
    int count = 0;
    std::map<CSongTrack*, int> newRows;
    std::map<std::tuple<CSongTrack*, int, int, int>, int> slots;
};

} // namespace

std::vector<CStr> filesAmong(const ListOf<CDropItem>& items) {
    std::vector<CStr> paths;
    for (const auto* item : items)
        if (item->type == dropFile || item->type == dropSample) paths.push_back(item->path);
    return paths;
}

DropPlan planDrop(CSeq* seq, const std::vector<CSongTrack*>& rows, const std::vector<CStr>& paths,
                  const std::vector<FileFacts>& facts, const DropTarget& target) {
    Planner planner(seq, rows, target);
    for (size_t i = 0; i < paths.size(); i++)
        if (facts[i].kind != SongFile::none) planner.add(paths[i], facts[i]);
    DropPlan& plan = planner.plan;
    const bool elsewhere = std::any_of(paths.begin(), paths.end(), forTheProgram);
    if (plan.files.empty() && !elsewhere)
        plan.refusal = "Songs take audio, MIDI files, clips, sounds and kits";
    if (!plan.refusal.empty()) plan.boxes.clear();
    return std::move(plan);
}
