#include "project/Arrivals.h"

#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "effects/CEffect.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "engine/ObjectKinds.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"
#include "instruments/SamplerFiles.h"
#include "project/ClipContent.h"
#include "project/ClipDrop.h"
#include "project/NewTracks.h"
#include "project/PresetFiles.h"
#include "project/SongSounds.h"
#include "project/TrackPreset.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TrackInstrument.h"

#include <string>

bool failToBring(const CStr& text, const CStr& what) {
    showMsg(nullptr, "Error", text + what);
    return false;
}

Arrival::Arrival(CSeq* into, const BringFile& file)
    : path(file.path), place(file.place), seq(into), host(into->host) {
}

CStr Arrival::stem() const {
    return changeFileExt(extractFileName(path), "");
}

bool Arrival::unread() const {
    return failToBring("Could not read file ", path);
}

bool Arrival::onKind(int kind) const {
    return isOfKind(place.onto, kind);
}

bool Arrival::takesPlace() const {
    return onKind(trackKind());
}

namespace {

/// A file for each channel of more than two.
class AudioArrival : public Arrival {
public:
    AudioArrival(CSeq* into, const BringFile& file) : Arrival(into, file) {}
    ~AudioArrival() override {
        if (samples.empty()) host->dropImported(files, path);
    }

    bool hasTime() const override { return true; }
    int trackKind() const override { return trackAudio; }
    int trackCount() const override { return int(files.size()); }
    bool prepare(const SamplePool::ImportWatch& watch) override {
        switch (host->importFiles(path, files, watch)) {
        case ImportResult::good:
            return true;
        case ImportResult::cancelled:
            return false;
        case ImportResult::tooLong:
            return failToBring("More than 2 GB of audio: ", path);
        case ImportResult::noRoom:
            return failToBring("There is no room to convert ", path);
        case ImportResult::unreadable:
            break;
        }
        return unread();
    }
    bool adopt() override {
        for (const CStr& file : files) {
            CSample* sample = host->addImported(file, path);
            if (!sample) return unread();
            samples.push_back(sample);
        }
        return true;
    }
    void link(NewTracks& tracks, CUndo* step) override {
        const bool several = samples.size() > 1;
        for (int i = 0; i < trackCount(); i++) {
            const CStr name = several ? stem() + " " + asStr(i + 1) : stem();
            CSongTrack* to = tracks.take(place, trackAudio, i, name);
            if (to) to->addPart(partOf(samples[size_t(i)], name), step);
        }
    }

private:
    CPart* partOf(CSample* sample, const CStr& name) const {
        auto* part = new CAudioPart;
        part->id = name;
        part->pos = asMax(0, limitTicks(place.tick));
        part->chs = sample->chs;
        part->setSelected(true);
        CAudioEvent* event = createAudioEvent();
        event->sample = sample;
        event->end = sample->frames - 1;
        part->addEvent(0, event);
        event->ticks = seq->getTicks(part);
        return part;
    }

    std::vector<CStr> files;
    std::vector<CSample*> samples; ///< of the pool
};

/// Its first track comes to the place, others below. The tempo of a song that holds something
/// already stays.
class MidiArrival : public Arrival {
public:
    MidiArrival(CSeq* into, const BringFile& file) : Arrival(into, file) {}

    bool hasTime() const override { return true; }
    int trackKind() const override { return trackMIDI; }
    bool prepare(const SamplePool::ImportWatch&) override {
        CFileStream stream(path, 0);
        if (!stream.isOpen()) return failToBring("Could not open file ", path);
        char id[4] = {};
        const bool midi = stream.read(id, 4) == 4 && std::string(id, 4) == "MThd";
        return midi || failToBring("Not a MIDI file ", path);
    }
    void link(NewTracks& tracks, CUndo* step) override {
        const MidiWay way = {.tracks = MidiTracks::byChannel,
                             .ontoParts = true,
                             .withPoints = !hasContent(seq->getProg()),
                             .index = tracks.indexBelow(place.onto)};
        CSongTrack* onto = takesPlace() ? place.onto : nullptr;
        const MidiSongResult result = addMidiFile(seq, path, onto, place.tick, way, step);
        tracks.follow(place.onto);
        if (result == MidiSongResult::truncated) failToBring("The file is cut short: ", path);
    }
};

class ClipArrival : public Arrival {
public:
    ClipArrival(CSeq* into, const BringFile& file) : Arrival(into, file), content(into) {}

    bool hasTime() const override { return true; }
    int trackKind() const override { return trackKindOf(content.part.get()); }
    bool prepare(const SamplePool::ImportWatch&) override {
        CFileStream stream(path, 0);
        if (!content.read(&stream)) return unread();
        content.part->setSelected(true);
        return true;
    }
    void link(NewTracks& tracks, CUndo* step) override {
        const int kind = trackKind();
        CSongTrack* to = tracks.take(place, kind, 0, content.part->id);
        if (!to || dropClip(content, seq, to, place.tick, step)) return;
        to = tracks.make(place.onto, kind, content.part->id); // the kit had no room
        if (to) dropClip(content, seq, to, place.tick, step);
    }

private:
    ClipContent content;
};

/// What an instrument track plays with: to the sampler that it has, else as a new one, on the
/// track if that plays nothing yet.
class ProgramArrival : public Arrival {
public:
    ProgramArrival(CSeq* into, const BringFile& file) : Arrival(into, file), present(sampler()) {}
    ~ProgramArrival() override = default;

    int trackKind() const override { return present ? 0 : trackMIDI; }
    bool takesPlace() const override {
        return onKind(trackMIDI) && !feedsAnything(place.onto->track);
    }
    bool prepare(const SamplePool::ImportWatch&) override {
        if (present) return true;
        made = std::make_unique<CSampler>(host);
        made->createChannels();
        made->createBuffers(host->frames);
        made->setRate(double(host->rate));
        made->setId(stem());
        return fill(made.get()) && made->getProg();
    }
    void link(NewTracks& tracks, CUndo* step) override {
        if (present) return;
        CSongTrack* to = takesPlace() ? place.onto : tracks.make(place.onto, trackMIDI, made->id);
        if (to) linkInstrument(made.release(), to->track, step);
    }

protected:
    virtual bool fill(CSampler* empty) = 0; ///< false after a message

    CSampler* const present; ///< null without

private:
    CSampler* sampler() const {
        if (!onKind(trackMIDI)) return nullptr;
        for (auto* comp : host->comps)
            if (auto* sampler = compAs<CSampler>(comp);
                sampler && getMIDICable(comp, place.onto->track->outPort(), nullptr))
                return sampler;
        return nullptr;
    }

    std::unique_ptr<CSampler> made;
};

class FontArrival : public ProgramArrival {
public:
    using ProgramArrival::ProgramArrival;

    void link(NewTracks& tracks, CUndo* step) override {
        if (!present) return ProgramArrival::link(tracks, step);
        firstNew = present->progs.getCount();
        step->asInt(present->curProg.address());
        present->openSF2(path, step);
    }
    bool finish() override {
        if (!present) return true;
        if (present->progs.getCount() == firstNew) return false;
        present->setProg(firstNew);
        return true;
    }

protected:
    bool fill(CSampler* empty) override { return empty->openSF2(path, nullptr); }

private:
    int firstNew = 0;
};

class BankArrival : public ProgramArrival {
public:
    using ProgramArrival::ProgramArrival;

    bool finish() override {
        if (present) present->openBank(path);
        return true;
    }

protected:
    bool fill(CSampler* empty) override {
        CFileStream stream(path, 0);
        empty->read(&stream, stream.getSize());
        return empty->getProg() || unread();
    }
};

/// On a drum track in place of its sounds.
class KitArrival : public Arrival {
public:
    KitArrival(CSeq* into, const BringFile& file) : Arrival(into, file) {}

    int trackKind() const override { return trackDrum; }
    bool prepare(const SamplePool::ImportWatch&) override {
        return countKitSounds(path) > 0 || unread();
    }
    void link(NewTracks& tracks, CUndo* step) override {
        if (takesPlace()) return;
        CSongTrack* to = tracks.make(place.onto, trackDrum, stem());
        if (to) seq->openDrumBank(to->track, path, step);
    }
    bool finish() override {
        if (takesPlace()) loadPreset(seq, place.onto->track->drumLayer(), place.onto->track, path);
        return true;
    }
};

/// Always a new track.
class TrackArrival : public Arrival {
public:
    TrackArrival(CSeq* into, const BringFile& file)
        : Arrival(into, file), kind(trackPresetKind(file.path)) {}

    int trackKind() const override { return kind; }
    bool takesPlace() const override { return false; }
    bool prepare(const SamplePool::ImportWatch&) override { return kind != 0 || unread(); }
    void link(NewTracks& tracks, CUndo* step) override {
        if (CSongTrack* to = tracks.make(place.onto, kind, stem()))
            fillTrack(to->track, path, step);
    }

private:
    const int kind;
};

class EffectArrival : public Arrival {
public:
    EffectArrival(CSeq* into, const BringFile& file)
        : Arrival(into, file), rack(std::make_unique<CEffect>(into->host)) {}
    ~EffectArrival() override = default;

    bool prepare(const SamplePool::ImportWatch&) override {
        if (!strip()) return failToBring("Select the track that the effect is for: ", path);
        rack->createIO();
        rack->createBuffers(host->frames);
        CFileStream stream(path, 0);
        rack->read(&stream, stream.getSize());
        if (!rack->getProg()) return unread();
        rack->setRate(double(host->rate));
        rack->id = rack->getProg()->id;
        rack->listKind = listInsert;
        return true;
    }
    void link(NewTracks&, CUndo* step) override {
        rack->ownerChannel = strip();
        step->asAdd(rack.release(), &strip()->inserts);
    }

private:
    /// The mixer strip that the track is heard through.
    COutputChannel* strip() const {
        CTrack* heard = place.onto ? place.onto->track : nullptr;
        if (!heard || heard->output()) return heard ? heard->output() : nullptr;
        for (auto* comp : host->comps)
            if (comp->type == compSampler && heard->outPort() &&
                getMIDICable(comp, heard->outPort(), nullptr))
                return comp->output();
        return nullptr;
    }

    std::unique_ptr<CEffect> rack;
};

class ArpeggioArrival : public Arrival {
public:
    ArpeggioArrival(CSeq* into, const BringFile& file) : Arrival(into, file) {}

    bool prepare(const SamplePool::ImportWatch&) override {
        if (!onKind(trackMIDI))
            return failToBring("Select the instrument track that the arpeggio is for: ", path);
        return true;
    }
    bool finish() override {
        CArp* arp = place.onto->track->arp.get();
        if (!arp->openProg(path)) return unread();
        arp->enable(1);
        return true;
    }
};

} // namespace

std::unique_ptr<Arrival> Arrival::make(CSeq* seq, const BringFile& file) {
    switch (songFileOf(file.path)) {
    case SongFile::audio:
        return std::make_unique<AudioArrival>(seq, file);
    case SongFile::midi:
        return std::make_unique<MidiArrival>(seq, file);
    case SongFile::clip:
        return std::make_unique<ClipArrival>(seq, file);
    case SongFile::font:
        return std::make_unique<FontArrival>(seq, file);
    case SongFile::program:
        if (getFiletype(file.path) != filetypeSampler)
            return std::make_unique<KitArrival>(seq, file);
        return std::make_unique<BankArrival>(seq, file);
    case SongFile::kit:
        return std::make_unique<KitArrival>(seq, file);
    case SongFile::effect:
        return std::make_unique<EffectArrival>(seq, file);
    case SongFile::arpeggio:
        return std::make_unique<ArpeggioArrival>(seq, file);
    case SongFile::track:
        return std::make_unique<TrackArrival>(seq, file);
    case SongFile::none:
        break;
    }
    return nullptr;
}
