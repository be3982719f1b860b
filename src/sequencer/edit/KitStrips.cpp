#include "sequencer/edit/KitStrips.h"

#include "engine/CQV.h"
#include "engine/CompTypes.h"
#include "engine/MixScene.h"
#include "engine/ObjectKinds.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "sequencer/edit/KitEdits.h"
#include "sequencer/song/CSeq.h"

namespace {

constexpr int kitsList = 64; ///< in places of files: no list of components

void visitSound(CDrumSound* sound, const SceneStrip::Place& place, const VisitStrips& visit) {
    visit({sound->output.get(), place, levelOf(sound), panOf(sound), muteOf(sound), soloOf(sound)});
}

/// `first` is the place of the first sound.
void visitTrack(const CTrack* track, SceneStrip::Place first, const VisitStrips& visit) {
    if (!track->drumLayer()) return;
    for (auto* sound : drumSounds(*track->drumLayer())) {
        visitSound(sound, first, visit);
        first.output++;
    }
}

/// Songs have their tracks one after the other, each with room for the largest kit.
void visitSong(const CSeq* song, int place, const VisitStrips& visit) {
    int first = 0;
    for (auto* track : song->tracks) {
        visitTrack(track, {kitsList, place, first}, visit);
        first += mostKitSounds;
    }
}

void visitHeld(CObject* held, const VisitStrips& visit) {
    if (auto* seq = compAs<CSeq>(held)) visitSong(seq, -1, visit);
    if (auto* track = compAs<CTrack>(held)) visitTrack(track, {}, visit);
    if (held->category != categorySampler) return;
    if (auto* sound = dynamic_cast<CDrumSound*>(held)) visitSound(sound, {}, visit);
}

void visitKits(CQV* host, CObject* held, const VisitStrips& visit) {
    if (held) return visitHeld(held, visit);
    int place = 0;
    for (auto* comp : host->comps) {
        if (auto* seq = compAs<CSeq>(comp)) visitSong(seq, place, visit);
        place++;
    }
}

} // namespace

void enterKitStrips() {
    enterInnerStrips(visitKits);
}
