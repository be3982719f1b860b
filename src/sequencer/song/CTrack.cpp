#include "sequencer/song/CTrack.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "base/Random.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "engine/MidiBytes.h"
#include "instruments/CArp.h"
#include "instruments/CDrumSound.h"
#include "instruments/CSynthProg.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/play/PlayedNotes.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/take/RecQueue.h"

#include <bitset>

namespace {

constexpr int editorWidth = 536, editorHeight = 379;
constexpr int defaultNoteHeight = 8, minNoteHeight = 2;
constexpr int noteRows = 128;
constexpr int scrollMargin = 20; ///< pixels below the last row
constexpr float lightFall = 0.15f;
constexpr int fullVelocity = 126; ///< of 0 to 126

/// Even steps of hue at one lightness and chroma.
constexpr int trackColors[] = {0xdd87a2, 0xe18885, 0xde8e69, 0xd29754, 0xbfa14c, 0xa6ac56,
                               0x86b46d, 0x64b989, 0x43bba7, 0x35b9c2, 0x49b3d8, 0x69aae6,
                               0x8aa1ea, 0xa797e4, 0xbf8fd4, 0xd189bd};

void fadeLights(const ListOf<CMIDIQ>& ports) {
    for (auto* port : ports) {
        const float light = port->hasData;
        if (light > 0.0f) port->hasData = fLimit(light - lightFall, 0.0f, 1.0f);
    }
}

} // namespace

CTrack::CTrack(CQV* root, CSeq* owner, int trackKind)
    : CComp(root), seq(owner), kind(trackKind), arp(std::make_unique<CArp>(root)),
      synthProg(trackKind == trackDrum ? std::make_unique<CSynthProg>(root, nullptr) : nullptr),
      recQueue(trackKind == trackMIDI || trackKind == trackDrum ? std::make_unique<RecQueue>()
                                                                : nullptr),
      played(recQueue ? std::make_unique<PlayedNotes>() : nullptr), take(this) {
    id = "Track";
    type = compTrack;
    editorStruct.width = editorWidth;
    editorStruct.height = editorHeight;
    const int rows = root->settings.getInt("track-noteh", defaultNoteHeight);
    noteHeight = rows < 1 ? defaultNoteHeight : rows;
    arp->init();
    arp->enabled = 0;
    if (synthProg) synthProg->addLayer();
}

CTrack::~CTrack() {
    for (CList* borrowed : listsOf(inPorts, outPorts, inputs, outputs)) borrowed->clear();
    deleteAll(subTracks);
    delete recSample.load();
}

CLayer* CTrack::drumLayer() const {
    return synthProg ? synthProg->layers.items(0) : nullptr;
}

CDrumSound* CTrack::drumSound(int index) const {
    const CLayer* layer = drumLayer();
    return layer ? static_cast<CDrumSound*>(layer->sounds.items(index)) : nullptr;
}

void CTrack::prepare(int frames) {
    processed = mixed = fxDone = false;
    toSound = nullptr;
    arp->prepare(frames);
}

void CTrack::willSound(CSongTrack* songTrack) {
    songTrack->nextToSound = nullptr;
    CSongTrack** last = &toSound;
    while (*last) last = &(*last)->nextToSound;
    *last = songTrack;
}

void CTrack::sound(int frames) {
    clearDrumStrips(this, frames);
    for (CSongTrack* t = toSound; t; t = t->nextToSound) t->voices->render(frames, 0);
    finishDrumStrips(this, frames);
}

void CTrack::sendParts(int bus, CInputChannel* to, int frames) {
    feedDrums(this, bus, to, frames);
}

void CTrack::idle() {
    fadeLights(inPorts);
    fadeLights(outPorts);
    arp->idle();
    if (const CLayer* kit = kind == trackDrum ? drumLayer() : nullptr)
        for (auto* sound : drumSounds(*kit)) {
            sound->output->idle();
            sound->output->peakFadeout();
        }
}

void CTrack::sleep(int on) {
    CComp::sleep(on);
    arp->sleep(on);
}

void CTrack::arpeggiate(int frames) {
    CMIDIQ* port = kind == trackMIDI ? outPort() : nullptr;
    if (!port) return;
    arp->inPort()->copyEvents(port);
    arp->process(frames);
    port->copyEvents(arp->outPort());
}

int CTrack::setCh(int msg) const {
    const int ch = channel;
    return ch < 0 ? msg : (msg & ~0x0F) | (ch & 0x0F);
}

int CTrack::setVel(int msg) const {
    const int percent = inSens;
    if (percent == 100 || !noteOn(msg)) return msg;
    const double s = percent / 100.0, v = asByte2(msg);
    const double scaled = fullVelocity * (1.0 - s + s * (v - 1.0) / fullVelocity);
    return asData(msg, asByte1(msg), asMinMax(asInt(scaled) + 1, 1, 127));
}

void CTrack::addRemovePlayingNote(int msg) {
    int& entry = playingNotes[asByte1(msg) & 127];
    if (noteOn(msg))
        entry = asData(msg, asByte1(msg), 0);
    else if (noteOff(msg))
        entry = 0;
}

bool CTrack::wantsTake() const {
    return !locked && (seq->recorder.anyArmed ? recArm != 0 : selected());
}

int CTrack::getRowHeight() const {
    const int own = rowHeight;
    return own ? own : usualRow;
}

void CTrack::setRowHeight(int pixels) {
    rowHeight = pixels ? asMinMax(pixels, leastRow, mostRow) : 0;
}

int CTrack::getHeight(bool withLanes) const {
    if (kind == trackFolder || !open()) return height;
    int sum = openHeight;
    if (withLanes && laneMode == 1 && laneStack == 0)
        for (auto* lane : subTracks)
            if (lane->visible) sum += lane->height;
    return sum;
}

int CTrack::getScroll() const {
    return kind == trackDrum ? 0 : int(scroll);
}

void CTrack::setScroll(int pixels) {
    const int64_t most = int64_t(noteHeight) * noteRows - openHeight + scrollMargin;
    scroll = asMax(0, asMin(pixels, saturate(most)));
}

void CTrack::setVertZoom(int pixels) {
    const int half = openHeight / 2;
    const double middle = double(scroll + half) / asMax(noteHeight, 1);
    noteHeight = asMax(pixels, minNoteHeight);
    setScroll(asRound(middle * noteHeight) - half);
}

CSubTrack* CTrack::activeParam() {
    CSubTrack* lane = editLanes.items(activeLane);
    return lane ? lane : editLanes.getFirst();
}

int CTrack::getFreeParam(const CUndo* undo) {
    std::bitset<maxSlots> used;
    eachWithPending(undo, &subTracks, [&used](CSubTrack* lane) {
        if (lane->automation() && lane->slot >= 0 && lane->slot < maxSlots)
            used.set(size_t(lane->slot));
    });
    int free = 0;
    while (free < maxSlots && used[size_t(free)]) free++;
    return free;
}

int CTrack::slotsInUse(const CUndo* undo) {
    int slots = 0;
    eachWithPending(undo, &subTracks, [&slots](CSubTrack* lane) {
        if (lane->automation()) slots = asMax(slots, lane->slot + 1);
    });
    return asMin(slots, maxSlots);
}

void CTrack::reserveSlots(int slots, const CUndo* undo) {
    for (auto* prog : seq->programs())
        eachWithPending(undo, &prog->tracks, [&](CSongTrack* songTrack) {
            if (songTrack->track != this) return;
            eachWithPending(undo, &songTrack->parts,
                            [slots](CPart* part) { part->reserveSlots(slots); });
        });
}

CSubTrack* CTrack::addLane(CSubTrack* lane, CUndo* undo) {
    if (lane->automation() && !placeLane(lane, undo)) return nullptr;
    if (undo) {
        undo->asAdd(lane, &subTracks);
    } else {
        GraphHold hold(host);
        subTracks.add(lane);
    }
    return lane;
}

bool CTrack::placeLane(CSubTrack* lane, const CUndo* undo) {
    const int slot = getFreeParam(undo);
    if (slot == maxSlots) {
        delete lane;
        return false;
    }
    lane->slot = slot;
    reserveSlots(slot + 1, undo);
    return true;
}

CSubTrack* CTrack::findLane(CObject* object, int param) {
    for (auto* lane : subTracks)
        if (lane->automation() && lane->object == object && lane->param == param) return lane;
    return nullptr;
}

int getRandomTrackColor() {
    constexpr int count = int(sizeof trackColors / sizeof trackColors[0]);
    return trackColors[asMin(asInt(asRand() * count), count - 1)];
}

CStr trackWord(int kind) {
    switch (kind) {
    case trackFolder:
        return "folder";
    case trackMIDI:
        return "instrument";
    case trackAudio:
        return "audio";
    case trackDrum:
        return "drum";
    default:
        return "track";
    }
}

CStr addTrackTitle(int kind) {
    switch (kind) {
    case trackFolder:
        return "Add Folder track";
    case trackMIDI:
        return "Add MIDI track";
    case trackAudio:
        return "Add Audio track";
    case trackDrum:
        return "Add Drum track";
    default:
        return "Add track";
    }
}
