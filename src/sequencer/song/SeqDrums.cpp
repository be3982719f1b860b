#include "sequencer/song/CSeq.h"

#include "audiofiles/CSample.h"
#include "audiofiles/CSampleReader.h"
#include "base/CStream.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/GraphHold.h"
#include "instruments/CDrumSound.h"
#include "instruments/CSynthProg.h"
#include "instruments/DrumKit.h"
#include "sequencer/edit/KitEdits.h"
#include "sequencer/play/AudioVoices.h"

#include <cassert>
#include <vector>

/// Kits of drum tracks, and the voices of the song.

namespace {

constexpr int openedHeight = CDrumSound::openHeight - CDrumSound::closedHeight;

} // namespace

void CSeq::addStandardKit(CTrack* track) {
    DrumKit kit(host, track->drumLayer(), this);
    kit.addStandard();
    takeKit(kit, track, nullptr);
}

void CSeq::takeKit(DrumKit& kit, CTrack* track, CUndo* undo) {
    if (undo) undo->asInt(track->openHeight.address());
    track->openHeight = track->openHeight + kit.height();
    if (undo) {
        kit.take(drumClips, undo);
        return;
    }
    GraphHold hold(host);
    kit.take(drumClips, nullptr);
}

bool CSeq::openDrumBank(CTrack* track, const CStr& path, CUndo* undo) {
    if (!track->synthProg) return false;
    CFileStream stream(path, 0);
    DrumKit kit(host, track->drumLayer(), this);
    kit.read(&stream, stream.getSize());
    if (kit.sounds.empty()) return false;
    if (undo) undo->asName(&track->synthProg->id);
    if (!kit.name.empty()) track->synthProg->id = kit.name;
    takeKit(kit, track, undo);
    return true;
}

CTrack* CSeq::drumToTrack(const CDrumSound* sound) {
    for (auto* track : tracks) {
        const CLayer* layer = track->drumLayer();
        if (layer && layer->sounds.contains(sound)) return track;
    }
    return nullptr;
}

void CSeq::deleteDrum(CDrumSound* sound, CUndo* undo) {
    CTrack* track = drumToTrack(sound);
    if (!track) return;
    CLayer* layer = track->drumLayer();
    const int index = layer->sounds.indexed(sound);
    const int count = layer->sounds.getCount();
    std::vector<int> places;
    for (int i = 0; i < count; i++) places.push_back(i == index ? -1 : i - (i > index));
    moveHits(this, track, places, undo);
    undo->asInt(track->openHeight.address());
    const int height = CDrumSound::closedHeight + (sound->opened() ? openedHeight : 0);
    track->openHeight = track->openHeight - height;
    undo->asRemove(sound, &layer->sounds);
}

void CSeq::playSound(void* sound, float velocity) {
    assert(heldByThread());
    auto* drum = static_cast<CDrumSound*>(sound);
    CTrack* track = drumToTrack(drum);
    CSeqProg* prog = getProg();
    if (!track || !prog) return;
    for (auto* songTrack : prog->tracks)
        if (songTrack->track == track) songTrack->hitDrum(drum, nullptr, velocity, 0.0f, 1.0f, 0);
}

void CSeq::eachDrum(const std::function<void(CDrumSound*)>& visit) {
    for (auto* track : tracks)
        if (const CLayer* layer = track->drumLayer())
            for (auto* sound : drumSounds(*layer)) visit(sound);
}

void CSeq::dropVoices() {
    assert(mayRewire());
    eachSongTrack([](CSongTrack* songTrack) {
        if (songTrack->voices) songTrack->voices->dropAll();
    });
}

void CSeq::setFrames(int frames) {
    dropVoices();
    eachDrum([frames](CDrumSound* sound) { sound->setFrames(frames); });
    CComp::setFrames(frames);
}

void CSeq::setRate(double rate) {
    dropVoices();
    eachDrum([rate](CDrumSound* sound) { sound->setRate(rate); });
    CComp::setRate(rate);
}

void CSeq::diskRead() {
    for (auto* prog : programs()) {
        if (!prog->playing) continue;
        for (auto* songTrack : prog->tracks)
            for (const auto* item : songTrack->freezeItems)
                if (item->sample && item->sample->reader) item->sample->reader->serve();
    }
}
