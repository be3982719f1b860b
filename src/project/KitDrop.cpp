#include "project/KitDrop.h"

#include "base/CStream.h"
#include "engine/CUndo.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "instruments/DrumKit.h"
#include "instruments/SamplerFiles.h"
#include "project/ClipContent.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace {

/// All that makes a drum sound as it does. Equal for equal ones.
std::string contentOf(CDrumSound* sound) {
    ListOf<CSampleClip> clips;
    for (int i = 0; i < sound->clipCount; ++i) clips.addUnique(sound->clips[i]);
    CMemoryStream stream;
    for (const auto* clip : clips) writeClip(&stream, clip);
    writeSound(&stream, sound, clips);
    return {reinterpret_cast<const char*>(stream.data), size_t(stream.getPos())};
}

/// Which place in the kit of a track each sound of a clip gets.
struct Places {
    std::vector<int> ofSound;
    std::vector<CDrumSound*> known; ///< of the clip, that the track has already
    int count = 0;                  ///< of sounds, with those that are new
};

Places findPlaces(const ListOf<CDrumSound>& clipSounds, const CLayer& layer) {
    Places places;
    std::unordered_map<std::string, int> kit;
    for (auto* sound : drumSounds(layer)) kit.emplace(contentOf(sound), places.count++);
    for (auto* sound : clipSounds) {
        const auto found = kit.find(contentOf(sound));
        if (found == kit.end()) {
            places.ofSound.push_back(places.count++);
            continue;
        }
        places.ofSound.push_back(found->second);
        places.known.push_back(sound);
    }
    return places;
}

/// Drops sounds from a kit that is still linked nowhere, and the clips that only they play.
void dropSounds(DrumKit& kit, const std::vector<CDrumSound*>& sounds) {
    for (CDrumSound* sound : sounds) {
        kit.sounds.remove(sound);
        delete sound;
    }
    CList used;
    for (const auto* sound : kit.sounds)
        for (int i = 0; i < sound->clipCount; ++i) used.addUnique(sound->clips[i]);
    for (int i = kit.clips.getCount() - 1; i >= 0; --i) {
        auto* clip = kit.clips.items(i);
        if (used.contains(clip)) continue;
        kit.clips.del(i);
        delete clip;
    }
}

void renumber(CPart* part, const std::vector<int>& places) {
    for (CBaseEvent* e = part->getEvents(); e; e = e->next) {
        auto* hit = asHit(e);
        const bool known = size_t(hit->sound) < places.size();
        hit->flags = known ? 0 : eventSelected;
        if (known) hit->sound = places[size_t(hit->sound)];
    }
    part->deleteSelected();
}

} // namespace

bool takeDrums(ClipContent& clip, CSeq* seq, CTrack* track, CUndo* undo) {
    CLayer* layer = track->drumLayer();
    DrumKit& kit = clip.drums();
    const Places places = findPlaces(kit.sounds, *layer);
    if (places.count > ClipContent::mostDrums) return false;
    dropSounds(kit, places.known);
    kit.retarget(layer, seq);
    renumber(clip.part.get(), places.ofSound);
    if (!kit.sounds.empty()) seq->takeKit(kit, track, undo);
    return true;
}
