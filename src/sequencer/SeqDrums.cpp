#include "sequencer/CSeq.h"

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
#include "sequencer/AudioVoices.h"

#include <cassert>
#include <vector>

/// Kits of drum tracks, and the voices of the song.

namespace {

constexpr int openedHeight = CDrumSound::openHeight - CDrumSound::closedHeight;

/// A copy of a drum part's content without the events of one sound, and with those of later ones
/// moved down. Null when there is nothing to change.
CPart* withoutSound(CPart* part, int index) {
    bool touched = false;
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next)
        touched = touched || static_cast<const CDrumEvent*>(e)->sound >= index;
    if (!touched) return nullptr;
    CPart* edited = part->copy(0);
    for (CBaseEvent* e = edited->getEvents(); e; e = e->next) {
        auto* hit = static_cast<CDrumEvent*>(e);
        hit->flags = hit->sound == index ? eventSelected : 0;
        if (hit->sound > index) hit->sound--;
    }
    edited->deleteSelected();
    return edited;
}

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
    for (auto* track : each<CTrack>(tracks)) {
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
    std::vector<CPart*> done; // a master may have several ghosts
    eachSongTrack([&](CSongTrack* songTrack) {
        if (songTrack->track != track) return;
        for (auto* part : each<CPart>(songTrack->parts)) {
            CPart* content = part->content();
            if (std::find(done.begin(), done.end(), content) != done.end()) continue;
            done.push_back(content);
            if (CPart* edited = withoutSound(content, index)) swapUndoPart(undo, content, edited);
        }
    });
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
    for (auto* songTrack : each<CSongTrack>(prog->tracks))
        if (songTrack->track == track) songTrack->hitDrum(drum, nullptr, velocity, 0.0f, 1.0f, 0);
}

void CSeq::eachDrum(const std::function<void(CDrumSound*)>& visit) {
    for (auto* track : each<CTrack>(tracks))
        if (const CLayer* layer = track->drumLayer())
            for (auto* sound : each<CDrumSound>(layer->sounds)) visit(sound);
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
    for (auto* prog : each<CSeqProg>(progs)) {
        if (!prog->playing) continue;
        for (auto* songTrack : each<CSongTrack>(prog->tracks))
            for (const auto* item : each<CFreezeItem>(songTrack->freezeItems))
                if (item->sample && item->sample->reader) item->sample->reader->serve();
    }
}
