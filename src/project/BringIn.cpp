#include "project/BringIn.h"

#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "effects/CEffect.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/CompTypes.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"
#include "instruments/SamplerFiles.h"
#include "project/ClipContent.h"
#include "project/ClipDrop.h"
#include "project/PresetFiles.h"
#include "project/SongSounds.h"
#include "sequencer/CSeq.h"
#include "sequencer/TrackInstrument.h"

#include <functional>
#include <memory>

namespace {

CStr stemOf(const CStr& path) {
    return changeFileExt(extractFileName(path), "");
}

bool isOneOf(const CStr& ext, const CStr& list) {
    return !ext.empty() && (list + "|").pos(ext + "|") >= 0;
}

bool fail(const CStr& text, const CStr& path) {
    showMsg(nullptr, "Error", text + path);
    return false;
}

/// One file on its way into a song.
class Bringing {
public:
    Bringing(CSeq* into, const CStr& file, const BringPlace& at)
        : seq(into), host(into->host), path(file), place(at) {}

    bool audio(const SamplePool::ImportWatch& watch);
    bool midi();
    bool clip();
    bool font();
    bool program();
    bool kit();
    bool effect();
    bool arpeggio();

private:
    CSeq* seq;
    CQV* host;
    const CStr& path;
    const BringPlace& place;

    bool unread() { return fail("Could not read file ", path); }
    CUndo* begin() {
        return host->undoStart(
            "Import " + extractFileName(path), seq,
            {.graph = true, .song = true, .seq = SeqNotice::tracks | SeqNotice::parts});
    }
    CTrack* track(int kind) const;
    bool hasPlace(int kind) const;
    bool hasPlaceForPlayer() const;
    CSampler* sampler() const;
    bool newSampler(const std::function<bool(CSampler*)>& fill);
    COutputChannel* strip() const;
};

/// The track that was meant, if it is of that kind; else null.
CTrack* Bringing::track(int kind) const {
    CTrack* wanted = place.onto ? place.onto->track : nullptr;
    return wanted && wanted->kind == kind ? wanted : nullptr;
}

/// Whether what comes to a track of that kind finds one; if not, says why.
bool Bringing::hasPlace(int kind) const {
    const CTrack* onto = track(kind);
    if (onto && onto->locked) return fail("The track is locked: ", onto->id);
    return onto || seq->hasTrackRoom(kind) || fail("Too many tracks", "");
}

bool Bringing::hasPlaceForPlayer() const {
    CTrack* player = track(trackMIDI);
    return (player && !feedsAnything(player)) || seq->hasTrackRoom(trackMIDI) ||
           fail("Too many tracks", "");
}

bool Bringing::clip() {
    ClipContent content(seq);
    CFileStream stream(path, 0);
    if (!content.read(&stream)) return unread();
    return hasPlace(trackKindOf(content.part.get())) &&
           dropClip(content, seq, place.onto, place.tick, path);
}

bool Bringing::audio(const SamplePool::ImportWatch& watch) {
    if (!hasPlace(trackAudio)) return false;
    ImportResult result = ImportResult::good;
    CSample* sample = host->importSample(path, 1, result, watch);
    if (result == ImportResult::cancelled) return false;
    if (result == ImportResult::tooLong) return fail("More than 2 GB of audio: ", path);
    if (result == ImportResult::noRoom) return fail("There is no room to convert ", path);
    if (!sample) return unread();
    auto part = std::make_unique<CAudioPart>();
    part->id = stemOf(path);
    part->pos = asMax(0, limitTicks(place.tick));
    part->chs = sample->chs;
    CAudioEvent* event = createAudioEvent();
    event->sample = sample;
    event->end = sample->frames - 1;
    part->addEvent(0, event);
    event->ticks = seq->getTicks(part.get());
    CUndo* step = begin();
    CSongTrack* to = track(trackAudio) ? place.onto : nullptr;
    if (!to) {
        to = seq->addTrack(trackAudio, seq->getProg(), step);
        if (to) to->track->id = part->id;
    }
    if (to) to->addPart(part.release(), step);
    host->undoEnd(step, true);
    return to != nullptr;
}

bool Bringing::midi() {
    if (track(trackMIDI) && !hasPlace(trackMIDI)) return false;
    const MidiSongResult result =
        openMidiSong(seq, path, track(trackMIDI) ? place.onto : nullptr, place.tick);
    if (result == MidiSongResult::unreadable) return fail("Could not open file ", path);
    if (result == MidiSongResult::truncated) fail("The file is cut short: ", path);
    return result != MidiSongResult::notMidi;
}

/// The sampler that the track plays, null without.
CSampler* Bringing::sampler() const {
    CTrack* player = track(trackMIDI);
    if (!player) return nullptr;
    for (auto* comp : each<CComp>(host->comps))
        if (comp->type == compSampler && getMIDICable(comp, player->outPort(), nullptr))
            return static_cast<CSampler*>(comp);
    return nullptr;
}

/// A sampler with what `fill` puts into it, on the track that was meant, if that plays nothing yet.
bool Bringing::newSampler(const std::function<bool(CSampler*)>& fill) {
    auto made = std::make_unique<CSampler>(host);
    made->createChannels();
    made->createBuffers(host->frames);
    made->setRate(double(host->rate));
    if (!fill(made.get()) || !made->getProg()) return false;
    made->setId(stemOf(path));
    CUndo* step = begin();
    CTrack* player = track(trackMIDI);
    if (!player || feedsAnything(player)) {
        const CSongTrack* added = seq->addTrack(trackMIDI, seq->getProg(), step);
        player = added ? added->track : nullptr;
        if (player) player->id = made->id;
    }
    if (player) linkInstrument(made.release(), player, step);
    host->undoEnd(step, true);
    return player != nullptr;
}

bool Bringing::font() {
    CSampler* present = sampler();
    if (!present && !hasPlaceForPlayer()) return false;
    if (!present)
        return newSampler([this](CSampler* made) {
            made->openSF2(path, nullptr);
            return true;
        });
    const int firstNew = present->progs.getCount();
    CUndo* step = begin();
    step->asInt(present->curProg.address());
    present->openSF2(path, step);
    host->undoEnd(step, true);
    if (present->progs.getCount() > firstNew) present->setProg(firstNew);
    return present->progs.getCount() > firstNew;
}

bool Bringing::program() {
    if (getFiletype(path) != filetypeSampler) return kit();
    if (CSampler* present = sampler()) {
        present->openBank(path);
        return true;
    }
    if (!hasPlaceForPlayer()) return false;
    return newSampler([this](CSampler* made) {
               CFileStream stream(path, 0);
               made->read(&stream, stream.getSize());
               return true;
           }) ||
           unread();
}

/// On a drum track in place of its sounds.
bool Bringing::kit() {
    if (countKitSounds(path) == 0) return unread();
    if (!hasPlace(trackDrum)) return false;
    if (CTrack* drums = track(trackDrum)) {
        loadPreset(seq, drums->drumLayer(), drums, path);
        return true;
    }
    CUndo* step = begin();
    const CSongTrack* made = seq->addTrack(trackDrum, seq->getProg(), step);
    if (made) made->track->id = stemOf(path);
    if (made) seq->openDrumBank(made->track, path, step);
    host->undoEnd(step, true);
    return made != nullptr;
}

/// The mixer strip that the track is heard through.
COutputChannel* Bringing::strip() const {
    CTrack* heard = place.onto ? place.onto->track : nullptr;
    if (heard && heard->output()) return heard->output();
    CSampler* instrument = sampler();
    return instrument ? instrument->output() : nullptr;
}

bool Bringing::effect() {
    COutputChannel* channel = strip();
    if (!channel) return fail("Select the track that the effect is for: ", path);
    auto rack = std::make_unique<CEffect>(host);
    rack->createIO();
    rack->createBuffers(host->frames);
    CFileStream stream(path, 0);
    rack->read(&stream, stream.getSize());
    if (!rack->getProg()) return unread();
    rack->setRate(double(host->rate));
    rack->id = rack->getProg()->id;
    rack->listKind = listInsert;
    rack->ownerChannel = channel;
    CUndo* step = begin();
    step->asAdd(rack.release(), &channel->inserts);
    host->undoEnd(step, true);
    return true;
}

bool Bringing::arpeggio() {
    CTrack* player = track(trackMIDI);
    if (!player) return fail("Select the instrument track that the arpeggio is for: ", path);
    if (!player->arp->openProg(path)) return unread();
    player->arp->enable(1);
    return true;
}

} // namespace

SongFile songFileOf(const CStr& path) {
    const CStr ext = extractFileExt(path).lowerCase();
    if (isOneOf(ext, audioFileExt)) return SongFile::audio;
    if (isOneOf(ext, midiFileExt)) return SongFile::midi;
    static const struct {
        const char* ext;
        SongFile kind;
    } kinds[] = {{".qvc", SongFile::clip},    {".sf2", SongFile::font},
                 {".qvs", SongFile::program}, {".qvd", SongFile::kit},
                 {".qve", SongFile::effect},  {".qva", SongFile::arpeggio}};
    for (const auto& k : kinds)
        if (ext == k.ext) return k.kind;
    return SongFile::none;
}

bool bringIn(CSeq* seq, const CStr& path, const BringPlace& place,
             const SamplePool::ImportWatch& watch) {
    Bringing file(seq, path, place);
    switch (songFileOf(path)) {
    case SongFile::audio:
        return file.audio(watch);
    case SongFile::midi:
        return file.midi();
    case SongFile::clip:
        return file.clip();
    case SongFile::font:
        return file.font();
    case SongFile::program:
        return file.program();
    case SongFile::kit:
        return file.kit();
    case SongFile::effect:
        return file.effect();
    case SongFile::arpeggio:
        return file.arpeggio();
    case SongFile::none:
        break;
    }
    return false;
}
