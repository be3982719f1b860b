#include "sequencer/edit/KitEdits.h"

#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/Setting.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "instruments/DrumKit.h"
#include "instruments/SoundSettings.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/RowLoops.h"
#include "sequencer/song/SongValues.h"

#include <numeric>
#include <unordered_set>

namespace {

constexpr StepEffects kitEffects{.song = true, .seq = SeqNotice::tracks | SeqNotice::parts};

/// The content of a part with its hits moved; null when that is the same.
std::unique_ptr<CPart> withPlaces(CPart* content, const std::vector<int>& places) {
    std::unique_ptr<CPart> edited(content->copy(0));
    const auto place = [&](int sound) {
        return sound >= 0 && sound < int(places.size()) ? places[size_t(sound)] : sound;
    };
    for (CBaseEvent* e = edited->getEvents(); e; e = e->next) {
        auto* hit = asHit(e);
        const int to = place(hit->sound);
        hit->flags = to < 0 ? eventSelected : 0;
        if (to >= 0) hit->sound = to;
    }
    edited->deleteSelected();
    if (const RowLoops* loops = rowLoops(content)) {
        RowLoops moved;
        for (int i = 0; i < int(loops->ticks.size()); i++) moved.set(place(i), loops->of(i));
        setRowLoops(edited.get(), &moved);
    }
    if (sameContent(edited.get(), content)) return nullptr;
    return edited;
}

/// Does `record(undo)` as one step for the track of a sound, unless that is locked.
template <class F>
void step(CSeq* seq, CDrumSound* sound, const char* title, F&& record) {
    CTrack* track = seq->drumToTrack(sound);
    if (!track || track->locked) return;
    CUndo* undo = seq->host->undoStart(title, seq, kitEffects);
    record(track, undo);
    seq->host->undoEnd(undo, false);
}

/// A switch of a sound.
template <auto field>
constexpr StoredValue::Kind soundSwitch(const char* name) {
    return {name,
            [](const CObject* o, int) {
                return StoredValue::Numbers{double(static_cast<const CDrumSound*>(o)->*field)};
            },
            [](CObject* o, int, const StoredValue::Numbers& to) {
                static_cast<CDrumSound*>(o)->*field = (unsigned char)(to[0] != 0.0);
                raiseSong(SeqNotice::tracks);
            }};
}
constexpr StoredValue::Kind muted = soundSwitch<&CDrumSound::mute>("Mute drum");
constexpr StoredValue::Kind soloed = soundSwitch<&CDrumSound::solo>("Solo drum");

} // namespace

CStr recordDrums(CSeq* seq, CTrack* track, const std::vector<CStr>& paths, CUndo* undo) {
    DrumKit kit(seq->host, track->drumLayer(), seq);
    const int room = mostKitSounds - track->drumLayer()->sounds.getCount();
    CStr left;
    for (const CStr& path : paths) {
        const bool came = kit.sounds.getCount() < room && kit.addFile(path);
        if (!came && left.empty()) left = path;
    }
    if (!kit.sounds.empty()) seq->takeKit(kit, track, undo);
    return left;
}

CStr addDrums(CSeq* seq, CTrack* track, const std::vector<CStr>& paths) {
    if (track->locked || !track->drumLayer()) return paths.empty() ? CStr() : paths.front();
    CUndo* undo = seq->host->undoStart("Add drum", seq, kitEffects);
    CStr left = recordDrums(seq, track, paths, undo);
    seq->host->undoEnd(undo, false);
    return left;
}

bool recordSample(CSeq* seq, CDrumSound* sound, const CStr& path, CUndo* undo) {
    std::unique_ptr<CSampleClip> clip = openClip(path);
    if (!clip) return false;
    clip->peakfile();
    if (sound->clipCount < 1) return false;
    undo->asPtr(reinterpret_cast<void**>(sound->clips[0].address()));
    sound->clips[0].storeRelease(clip.get());
    undo->asAdd(clip.release(), &seq->drumClips);
    undo->asName(&sound->id);
    sound->id = extractFileName(path);
    return true;
}

bool setDrumSample(CSeq* seq, CDrumSound* sound, const CStr& path) {
    bool came = false;
    step(seq, sound, "Replace drum",
         [&](CTrack*, CUndo* undo) { came = recordSample(seq, sound, path, undo); });
    return came;
}

void moveDrum(CSeq* seq, CDrumSound* sound, int place) {
    step(seq, sound, "Move drum", [&](CTrack* track, CUndo* undo) {
        auto& sounds = track->drumLayer()->sounds;
        const int from = sounds.indexed(sound), last = sounds.getCount() - 1;
        const int to = asMinMax(place, 0, last);
        if (from == to) return;
        std::vector<int> order(size_t(last) + 1), places(order.size());
        std::iota(order.begin(), order.end(), 0);
        order.erase(order.begin() + from);
        order.insert(order.begin() + to, from);
        for (size_t i = 0; i < order.size(); i++) places[size_t(order[i])] = int(i);
        moveHits(seq, track, places, undo);
        undo->asMove(sound, &sounds, &sounds, to > from ? to + 1 : to);
    });
}

void removeDrum(CSeq* seq, CDrumSound* sound) {
    step(seq, sound, "Delete drum", [&](CTrack*, CUndo* undo) { seq->deleteDrum(sound, undo); });
}

void moveHits(CSeq* seq, CTrack* track, const std::vector<int>& places, CUndo* undo) {
    std::unordered_set<const CPart*> done; // a master may have several ghosts
    seq->eachSongTrack([&](CSongTrack* songTrack) {
        if (songTrack->track != track) return;
        for (auto* part : songTrack->parts) {
            CPart* content = part->content();
            if (!done.insert(content).second) continue;
            if (std::unique_ptr<CPart> edited = withPlaces(content, places))
                swapUndoPart(undo, content, edited.release());
        }
    });
}

StoredValue levelOf(CDrumSound* sound) {
    return findSetting(settingsOf(*sound), "Volume")->of(sound);
}

StoredValue panOf(CDrumSound* sound) {
    return findSetting(settingsOf(*sound), "Pan")->of(sound);
}

StoredValue muteOf(CDrumSound* sound) {
    return {&muted, sound};
}

StoredValue soloOf(CDrumSound* sound) {
    return {&soloed, sound};
}
