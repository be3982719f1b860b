#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "base/Paths.h"
#include "effects/CEffect.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/MidiBytes.h"
#include "instruments/CSampler.h"
#include "interchange/DawClock.h"
#include "interchange/DawFiles.h"
#include "interchange/DawUnits.h"
#include "interchange/DawXml.h"
#include "interchange/ScratchFolder.h"
#include "interchange/ZipFile.h"
#include "project/SongSounds.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/Templates.h"
#include "sequencer/song/TrackInstrument.h"

#include <map>
#include <memory>

namespace {

enum StripParam : int { paramVolume = 0, paramPan = 1, paramMute = 2 };

constexpr int64_t mostXmlBytes = int64_t(64) << 20;
constexpr int64_t mostAudioBytes = int64_t(4) << 30;
constexpr int64_t mostDeviceBytes = int64_t(256) << 20;
constexpr size_t mostEvents = 4'000'000; ///< that loops are written out to

CStr text(const std::string& s) {
    return s.c_str();
}

/// A piece of a clip: what stands in the content from `content` on sounds at `at`, both in quarter
/// notes, the latter from the clip's start.
struct Piece {
    double at, content, length;
};

std::vector<Piece> piecesOf(const DawClip& clip) {
    const double turn = clip.loopEnd - clip.loopStart;
    if (turn <= 1.0 / ticksPerBeat || clip.playStart + clip.duration <= clip.loopEnd)
        return {{0.0, clip.playStart, clip.duration}};
    std::vector<Piece> pieces;
    double at = std::max(clip.loopEnd - clip.playStart, 0.0);
    if (at > 0.0) pieces.push_back({0.0, clip.playStart, at});
    for (; at < clip.duration && pieces.size() < mostEvents; at += turn)
        pieces.push_back({at, clip.loopStart, std::min(turn, clip.duration - at)});
    return pieces;
}

/// Brings one song in.
class Importer {
public:
    Importer(CSeq* s, const ZipReader& archive, DawSong& from, std::vector<CStr>& leftOut)
        : seq(s), host(s->host), prog(s->getProg()), zip(archive), song(from), lost(leftOut),
          begins(!hasContent(prog)) {
        for (const std::string& line : song.lost) lost.push_back(text(line));
    }

    DawResult prepare(const DawWatch& watch); ///< files, while nothing of the song changes
    void link();

private:
    /// What came of a track of the file.
    struct Made {
        CSongTrack* songTrack;
        COutputChannel* strip; ///< null without one
        bool audio;
    };

    /// What a part of clips gets.
    struct Audio {
        EventCollector events;
        int chs = 0, count = 0;
    };

    static void listAudio(const std::vector<DawClip>& clips, std::map<std::string, bool>& names);
    bool bring(const std::string& name, bool external, const DawWatch& watch);
    bool haveRoom() const;
    std::vector<int> kindsOf(const DawTrack& t) const;
    void addTimes();
    void addTrack(size_t index);
    void addBuses();
    CComp* addInstrument(const DawTrack& t, CTrack* track);
    void setStrip(const DawTrack& t, COutputChannel* strip);
    void addInserts(const DawTrack& t, COutputChannel* strip);
    std::string stateOf(const DawDevice& device);
    CPart* partOf(const DawClip& clip, CTrack* track);
    CPart* audioPartOf(const DawClip& clip);
    void fillNotes(CPart* part, const DawClip& clip, bool drums);
    void addRow(EventCollector& events, const DawPoints& row, const Piece& piece);
    void addClips(Audio& to, const DawClip& clip, double start, const Piece& piece);
    void addAudio(Audio& to, const DawClip& clip, double start, Piece piece);
    void addEvent(Audio& to, const DawClip& clip, CSample* sample, const Piece& piece,
                  double fromSeconds, double toSeconds);
    double sourceAt(const DawClip& clip, double start, double content) const;
    static void setClip(CAudioEvent* event, const DawClip& clip);
    CObject* targetOf(const DawPoints& row, int& param, bool& squared) const;
    CSubTrack* laneOf(CTrack* track, const DawPoints& row, bool& squared);
    std::vector<CPart*> partsOf(CSongTrack* songTrack) const;
    void coverPoints(const Made& into, const DawPoints& row);
    void addLane(const Made& into, const DawPoints& row);
    void settleSends() const;
    void lose(const CStr& what);

    CSeq* seq;
    CQV* host;
    CSeqProg* prog;
    const ZipReader& zip;
    DawSong& song;
    std::vector<CStr>& lost;
    const bool begins;
    const ScratchFolder scratch;
    CUndo* step = nullptr;
    BeatClock clock;                         ///< of the song that it comes into
    std::map<std::string, CSample*> samples; ///< by name in the archive
    std::map<size_t, std::vector<Made>> made;
    std::map<std::string, int> buses; ///< place among the sends, by channel id
    size_t eventCount = 0;
};

void Importer::lose(const CStr& what) {
    for (const CStr& known : lost)
        if (known == what) return;
    lost.push_back(what);
}

// Files.

void Importer::listAudio(const std::vector<DawClip>& clips, std::map<std::string, bool>& names) {
    for (const DawClip& c : clips) {
        for (const DawAudio& a : c.audio) names.try_emplace(a.file, a.external);
        listAudio(c.clips, names);
    }
}

/// Into a folder of its own under its plain name, which the new file in the project bears too.
bool Importer::bring(const std::string& name, bool external, const DawWatch& watch) {
    std::string path = name;
    const CStr plain = extractFileName(text(name));
    const auto told = [&](float done) { return !watch || watch(plain, done); };
    if (!external) {
        const std::string folder = scratch.file(std::to_string(samples.size()));
        path = folder + "/" + plain.asChar();
        if (!createDir(folder.c_str()) || !zip.extract(name, mostAudioBytes, path, [&](double d) {
                return told(float(d) / 2);
            })) {
            lose("Audio that is not in the file, or damaged: " + text(name));
            return told(1.0f);
        }
    }
    std::vector<CStr> files;
    const ImportResult result = host->importFiles(
        path.c_str(), files, [&](float d) { return told(external ? d : 0.5f + d / 2); });
    if (result == ImportResult::cancelled) return false;
    if (result != ImportResult::good || files.empty()) {
        lose("Audio that can't be read: " + text(name));
        return true;
    }
    if (files.size() > 1) lose("Channels beyond the first of " + text(name));
    if (!external && files.front() == path.c_str()) {
        const CStr own = host->requireSampleFilename(plain, nullptr);
        if (own.empty() || !copyFile(path.c_str(), own)) {
            lose("Audio for which there is no room: " + text(name));
            return true;
        }
        files.front() = own;
    }
    samples[name] = host->addImported(files.front(), external ? text(name) : text(path));
    return true;
}

std::vector<int> Importer::kindsOf(const DawTrack& t) const {
    if (t.isFolder) return {trackFolder};
    if (t.role != "regular") return {};
    for (const DawDevice& d : t.devices)
        if (d.id == dawKit && !d.state.empty()) return {trackDrum};
    bool notes = false, audio = false;
    for (const DawClip& c : t.clips) {
        std::map<std::string, bool> names;
        listAudio({c}, names);
        audio = audio || !names.empty();
        notes = notes || !c.notes.empty();
    }
    if (audio && notes) return {trackAudio, trackMIDI};
    const bool told = t.content.find("audio") != std::string::npos &&
                      t.content.find("notes") == std::string::npos;
    return {audio || (told && !notes) ? trackAudio : trackMIDI};
}

bool Importer::haveRoom() const {
    std::map<int, int> count;
    for (const DawTrack& t : song.tracks)
        for (const int kind : kindsOf(t)) count[kind]++;
    for (const auto& [kind, wanted] : count)
        if (!seq->hasTrackRoom(kind, nullptr, wanted)) return false;
    return true;
}

DawResult Importer::prepare(const DawWatch& watch) {
    if (scratch.path.empty() || !haveRoom()) return DawResult::noRoom;
    std::map<std::string, bool> names;
    for (const DawTrack& t : song.tracks) listAudio(t.clips, names);
    for (const auto& [name, external] : names)
        if (!bring(name, external, watch)) return DawResult::cancelled;
    return DawResult::good;
}

// Times.

void Importer::addTimes() {
    if (!begins) {
        if (!song.tempos.empty() || song.bpm != double(host->songTempo))
            lose("Its tempo: that of this song stays");
        return;
    }
    const auto tempo = [&](double time, double bpm, bool ramp) {
        if (bpm < double(minTempo) || bpm > double(maxTempo))
            lose("Tempos below 10 or above 250 beats a minute");
        auto* point = new CTempoPart;
        point->pos = toTicks(time);
        point->setTempo(float(bpm));
        point->ramp = ramp;
        step->asAdd(point, &prog->tempos);
    };
    if (song.tempos.empty() || song.tempos.front().time > 0.0) tempo(0.0, song.bpm, false);
    for (const DawTempo& t : song.tempos) tempo(t.time, t.bpm, t.ramp);
    const auto signature = [&](double time, int num, int den) {
        auto* point = new CTimesigPart(num, den);
        point->pos = toTicks(time);
        step->asAdd(point, &prog->timesigs);
    };
    if (song.signatures.empty() || song.signatures.front().time > 0.0)
        signature(0.0, song.num, song.den);
    for (const DawSignature& s : song.signatures) signature(s.time, s.num, s.den);
    for (const DawMarker& m : song.markers) {
        auto* marker = new CMarkerPart;
        if (!m.name.empty()) marker->id = text(m.name);
        marker->pos = toTicks(m.time);
        step->asAdd(marker, &prog->markers);
    }
}

// Tracks and strips.

/// The file of a device's state, empty without one.
std::string Importer::stateOf(const DawDevice& device) {
    if (device.state.empty() || !isPlainEntry(device.state)) return "";
    const std::string path = scratch.file("device" + std::to_string(eventCount++) +
                                          extractFileExt(text(device.state)).asChar());
    if (zip.extract(device.state, mostDeviceBytes, path)) return path;
    lose("What is set in " + text(device.name) + ": it is not in the file, or damaged");
    return "";
}

CComp* Importer::addInstrument(const DawTrack& t, CTrack* track) {
    const auto found = std::ranges::find(t.devices, "instrument", &DawDevice::role);
    if (found == t.devices.end()) return nullptr;
    const std::string state = found->id == dawSampler ? stateOf(*found) : "";
    if (!state.empty()) {
        auto sampler = std::make_unique<CSampler>(host);
        sampler->createChannels();
        sampler->createBuffers(host->frames);
        sampler->setRate(double(host->rate));
        sampler->setId(text(found->name));
        CFileStream stream(state.c_str(), 0);
        sampler->read(&stream, int(stream.getSize()));
        if (sampler->getProg()) {
            CComp* instrument = sampler.release();
            linkInstrument(instrument, track, step);
            return instrument;
        }
    }
    lose("Instrument " + text(found->name) + " of " + text(t.name) +
         ": a synthesizer plays in its place");
    return addTrackInstrument(seq, track, step);
}

void Importer::addInserts(const DawTrack& t, COutputChannel* strip) {
    for (const DawDevice& d : t.devices) {
        if (d.role == "instrument" || d.id == dawKit) continue;
        const std::string state = d.id == dawRack ? stateOf(d) : "";
        auto rack = std::make_unique<CEffect>(host);
        rack->createIO();
        rack->createBuffers(host->frames);
        if (!state.empty()) {
            CFileStream stream(state.c_str(), 0);
            rack->read(&stream, int(stream.getSize()));
        }
        if (state.empty() || !rack->getProg()) {
            lose("Effect " + text(d.name) + " of " + text(t.name));
            continue;
        }
        rack->setRate(double(host->rate));
        rack->id = rack->getProg()->id;
        rack->listKind = listInsert;
        rack->ownerChannel = strip;
        strip->inserts.add(rack.release());
    }
}

/// Of a strip that is not linked yet.
void Importer::setStrip(const DawTrack& t, COutputChannel* strip) {
    if (!strip) {
        for (const DawDevice& d : t.devices)
            if (d.role != "instrument") lose("Effect " + text(d.name) + " of " + text(t.name));
        return;
    }
    if (t.volume > 1.0) lose("Levels above 0 dB");
    strip->vol = toFader(t.volume);
    strip->setVol(strip->vol, false);
    strip->pan = float(t.pan * 2.0 - 1.0);
    strip->setPan(strip->pan, false);
    addInserts(t, strip);
}

/// That of all notes, 0 without any, -1 for several.
short channelOf(const DawTrack& t) {
    int common = -1;
    for (const DawClip& c : t.clips)
        for (const DawNote& n : c.notes) {
            if (common >= 0 && n.channel != common) return -1;
            common = n.channel;
        }
    return short(std::max(common, 0));
}

void Importer::addTrack(size_t index) {
    const DawTrack& t = song.tracks[index];
    for (const int kind : kindsOf(t)) {
        CSongTrack* songTrack = seq->addTrack(kind, prog, step);
        if (!songTrack) return;
        CTrack* track = songTrack->track;
        track->id = text(t.name);
        if (t.colour >= 0) track->colour = t.colour;
        if (const auto folder = made.find(size_t(t.parent)); t.parent >= 0 && folder != made.end())
            track->folder = folder->second.front().songTrack->track;
        songTrack->setMuted(t.mute);
        songTrack->setSoloed(t.solo);
        CComp* instrument = kind == trackMIDI ? addInstrument(t, track) : nullptr;
        COutputChannel* strip = instrument ? instrument->output() : track->output();
        if (kind != trackFolder) setStrip(t, strip);
        if (kind == trackMIDI) track->channel = channelOf(t);
        if (kind == trackDrum)
            for (const DawDevice& d : t.devices)
                if (const std::string kit = d.id == dawKit ? stateOf(d) : ""; !kit.empty())
                    seq->openDrumBank(track, kit.c_str(), step);
        made[index].push_back({songTrack, strip, kind == trackAudio});
        for (const DawClip& clip : t.clips)
            if (CPart* part = kind == trackFolder ? nullptr : partOf(clip, track))
                songTrack->addPart(part, step);
    }
}

/// Send buses, behind those there are.
void Importer::addBuses() {
    int place = host->sends.getCount();
    for (const DawTrack& t : song.tracks) {
        if (t.role == "submix") lose("Group " + text(t.name) + ": its strips lead to the main out");
        if (t.role == "master" && (t.volume != 1.0 || !t.devices.empty()))
            lose("Level and effects of the main out");
        if (t.role != "effect") continue;
        if (place >= maxSends) {
            lose("Send buses beyond the 32nd");
            continue;
        }
        auto* bus = new CGroupCh(host);
        bus->init();
        bus->id = text(t.name);
        bus->createBuffers(host->frames);
        setStrip(t, bus->output());
        step->asAdd(bus, &host->sends);
        CComp* out = host->getAudioOut();
        if (CAudioCable* cable = out ? createAudioCable(out, bus->output(), nullptr) : nullptr)
            step->asAdd(cable, &out->audioCables);
        buses[t.channelId] = place++;
    }
}

/// Only now that the step has been carried out: a bus that comes shifts those of strips that come
/// with it.
void Importer::settleSends() const {
    for (const auto& [index, all] : made)
        for (const Made& m : all)
            for (const DawSend& s : song.tracks[index].sends)
                if (const auto bus = buses.find(s.destination); m.strip && bus != buses.end())
                    m.strip->sendLevels[bus->second]->level = toFader(s.level);
}

// Parts.

void Importer::addRow(EventCollector& events, const DawPoints& row, const Piece& piece) {
    for (const DawPoint& p : row.points) {
        if (p.time < piece.content - 1e-9 || p.time > piece.content + piece.length) continue;
        const auto data = [&](double most) {
            return int(std::lround(std::clamp(p.value, 0.0, 1.0) * most));
        };
        int message = 0;
        switch (row.target) {
        case DawTarget::controller:
            message = asData(midiController | row.channel, row.number, data(127));
            break;
        case DawTarget::polyPressure:
            message = asData(midiAftertouch | row.channel, row.number, data(127));
            break;
        case DawTarget::pressure:
            message = asData(midiPressure | row.channel, data(127), 0);
            break;
        case DawTarget::program:
            message = asData(midiProgram | row.channel,
                             int(std::lround(std::clamp(p.value, 0.0, 127.0))), 0);
            break;
        case DawTarget::pitchBend:
            message =
                asData(midiPitchBend | row.channel, data(mostBend) & 127, data(mostBend) >> 7);
            break;
        default:
            return;
        }
        if (eventCount++ >= mostEvents) return lose("Events beyond four million");
        CMIDIEvent* event = createMIDIEvent();
        event->data = message;
        event->length = 0;
        events.add(toTicks(piece.at + p.time - piece.content), event);
    }
}

/// Content that is not looped keeps what stands outside of the window; ticks of it count from the
/// content's own 0.
void Importer::fillNotes(CPart* part, const DawClip& clip, bool drums) {
    EventCollector events;
    std::vector<Piece> pieces = piecesOf(clip);
    const bool looped = pieces.size() > 1;
    constexpr double far = 4e6;
    if (!looped) {
        part->offset = -toTicks(clip.playStart);
        pieces = {{-far, -far, 2 * far}};
    }
    for (const Piece& piece : pieces) {
        for (const DawNote& n : clip.notes) {
            if (n.time < piece.content - 1e-9 || n.time >= piece.content + piece.length) continue;
            if (eventCount++ >= mostEvents) return lose("Events beyond four million");
            const double at = piece.at + n.time - piece.content;
            const double length =
                looped ? std::min(n.duration, piece.content + piece.length - n.time) : n.duration;
            const int velocity = asMinMax(int(std::lround(n.velocity * 127)), 1, 127);
            if (drums) {
                CDrumEvent* hit = createDrumEvent();
                hit->sound = std::max(n.key - firstDrumKey, 0);
                hit->velocity = float(velocity) / 127.0f;
                hit->length = std::max(toTicks(length), 1);
                events.add(toTicks(at), hit);
                continue;
            }
            CMIDIEvent* event = createMIDIEvent();
            event->data = asData(midiNoteOn | n.channel, n.key, velocity);
            event->length = std::max(toTicks(length), 1);
            events.add(toTicks(at), event);
        }
        for (const DawPoints& row : clip.points) {
            if (!drums) addRow(events, row, piece);
            if (row.target == DawTarget::parameter) lose("Automation inside of clips");
        }
    }
    part->setEvents(events.takeList());
}

CPart* Importer::partOf(const DawClip& clip, CTrack* track) {
    CPart* part = nullptr;
    std::map<std::string, bool> names;
    listAudio({clip}, names);
    if (track->kind == trackAudio) {
        if (!names.empty()) part = audioPartOf(clip);
    } else if (names.empty() || !clip.notes.empty()) {
        part = track->kind == trackDrum ? static_cast<CPart*>(new CDrumPart) : new CMIDIPart;
        fillNotes(part, clip, track->kind == trackDrum);
    }
    if (!part) return nullptr;
    part->id = clip.name.empty() ? track->id : text(clip.name);
    part->pos = std::max(toTicks(clip.time), 0);
    part->length = std::max(toTicks(clip.time + clip.duration) - toTicks(clip.time), 1);
    part->colour = clip.colour;
    part->setMuted(!clip.enabled);
    return part;
}

void Importer::setClip(CAudioEvent* event, const DawClip& clip) {
    event->fadeInMs = float(clip.fadeInSeconds * 1000.0);
    event->fadeOutMs = float(clip.fadeOutSeconds * 1000.0);
    for (const DawPoints& row : clip.points) {
        const auto value = float(row.points.empty() ? 0.0 : row.points.front().value);
        if (row.target == DawTarget::gain) event->gain = std::clamp(value, 0.0f, 16.0f);
        if (row.target == DawTarget::pan) event->pan = std::clamp(value * 2.0f - 1.0f, -1.0f, 1.0f);
        if (row.target != DawTarget::transpose || row.points.empty()) continue;
        event->semitones = int(std::lround(std::clamp(value, -48.0f, 48.0f)));
        event->fine = std::clamp(value, -48.0f, 48.0f) - float(event->semitones);
    }
}

/// Where in its source a clip without warps is at a place of its content, in seconds; `start` is
/// where the clip begins in the song.
double Importer::sourceAt(const DawClip& clip, double start, double content) const {
    const DawAudio& a = clip.audio.front();
    const double passed =
        clock.toSeconds(start + content - clip.playStart) - clock.toSeconds(start);
    return a.startSeconds + passed * a.speed;
}

void Importer::addEvent(Audio& to, const DawClip& clip, CSample* sample, const Piece& piece,
                        double fromSeconds, double toSeconds) {
    if (eventCount++ >= mostEvents) return lose("Events beyond four million");
    const DawAudio& a = clip.audio.front();
    const double last = std::max(sample->frames - 1.0, 0.0);
    const auto frame = [&](double s) { return std::round(s * double(sample->rate)); };
    CAudioEvent* event = createAudioEvent();
    event->sample = sample;
    event->start = int(std::clamp(frame(fromSeconds), 0.0, last));
    event->end = int(std::clamp(frame(toSeconds) - 1.0, double(event->start), last));
    event->ticks = std::max(toTicks(piece.at + piece.length) - toTicks(piece.at), 1);
    if (a.warps.size() > 1) {
        const bool repitch = a.algorithm.find("pitch") != std::string::npos ||
                             a.algorithm.find("sampl") != std::string::npos;
        event->mode = repitch ? 1 : 2;
    }
    setClip(event, clip);
    if (event->mode == 0 && a.speed != 1.0 && a.speed > 0.0) {
        const double semitones = std::clamp(12.0 * std::log2(a.speed), -96.0, 96.0);
        event->semitones = int(std::lround(semitones));
        event->fine = float(semitones - event->semitones);
    }
    to.events.add(toTicks(piece.at), event);
    to.count++;
    to.chs = std::max(to.chs, sample->chs);
}

/// What of a clip with a file sounds in a piece, whose `at` is the part's own time.
void Importer::addAudio(Audio& to, const DawClip& clip, double start, Piece piece) {
    const DawAudio& a = clip.audio.front();
    const auto found = samples.find(a.file);
    CSample* sample = found == samples.end() ? nullptr : found->second;
    if (!sample) return;
    if (a.warps.size() < 2) {
        const double early = std::min(sourceAt(clip, start, piece.content), 0.0) / -a.speed;
        if (early > 0.0 && a.speed > 0.0) {
            const double at = start + piece.content - clip.playStart;
            const double skip = clock.toBeats(clock.toSeconds(at) + early) - at;
            piece = {piece.at + skip, piece.content + skip, piece.length - skip};
        }
        if (piece.length <= 0.0) return;
        return addEvent(to, clip, sample, piece, sourceAt(clip, start, piece.content),
                        sourceAt(clip, start, piece.content + piece.length));
    }
    for (size_t i = 0; i + 1 < a.warps.size(); i++) {
        const DawWarp &left = a.warps[i], &right = a.warps[i + 1];
        const double begin = std::max(piece.content, left.beat);
        const double end = std::min(piece.content + piece.length, right.beat);
        if (end - begin < 0.5 / ticksPerBeat) continue;
        const auto seconds = [&](double beat) {
            return left.contentSeconds + (right.contentSeconds - left.contentSeconds) *
                                             (beat - left.beat) / (right.beat - left.beat);
        };
        addEvent(to, clip, sample, {piece.at + begin - piece.content, begin, end - begin},
                 seconds(begin), seconds(end));
    }
}

/// The clips in a clip, or its own file. `start` is where it begins in the song.
void Importer::addClips(Audio& to, const DawClip& clip, double start, const Piece& piece) {
    if (!clip.audio.empty()) return addAudio(to, clip, start, piece);
    for (const DawClip& c : clip.clips) {
        for (const Piece& in : piecesOf(c)) {
            const double first = c.time + in.at;
            const double begin = std::max(piece.content, first);
            const double end = std::min(piece.content + piece.length, first + in.length);
            if (end <= begin) continue;
            addClips(to, c, start + c.time - clip.playStart,
                     {piece.at + begin - piece.content, in.content + begin - first, end - begin});
        }
    }
}

/// The only clip of a part, from its start on, is one at its own speed, or a part of several.
CPart* Importer::audioPartOf(const DawClip& clip) {
    auto part = std::make_unique<CAudioPart>();
    Audio to;
    const std::vector<Piece> pieces = piecesOf(clip);
    const bool own = !clip.audio.empty() && pieces.size() == 1;
    if (pieces.size() == 1 && !own) part->offset = -toTicks(clip.playStart);
    for (const Piece& piece : pieces) {
        const double at = own || pieces.size() > 1 ? piece.at : piece.content;
        addClips(to, clip, clip.time, {at, piece.content, piece.length});
    }
    part->multiclip = !own || to.count != 1;
    part->chs = std::max(to.chs, 1);
    part->setEvents(to.events.takeList());
    return part.release();
}

// Automation.

/// What a row moves, and whether that counts squared; null for what is not here.
CObject* Importer::targetOf(const DawPoints& row, int& param, bool& squared) const {
    for (const auto& [index, all] : made) {
        const DawTrack& t = song.tracks[index];
        COutputChannel* strip = all.front().strip;
        if (!strip) continue;
        param = row.parameter == t.volumeId ? paramVolume
                : row.parameter == t.panId  ? paramPan
                : row.parameter == t.muteId ? paramMute
                                            : -1;
        squared = param == paramVolume;
        if (param >= 0) return strip;
        for (const DawSend& s : t.sends)
            if (const auto bus = buses.find(s.destination);
                s.levelId == row.parameter && bus != buses.end()) {
                param = 0;
                squared = true;
                return strip->sendLevels[bus->second];
            }
    }
    return nullptr;
}

CSubTrack* Importer::laneOf(CTrack* track, const DawPoints& row, bool& squared) {
    int param = row.number;
    CObject* object = nullptr;
    if (row.target == DawTarget::parameter) {
        object = row.parameter.empty() ? nullptr : targetOf(row, param, squared);
        if (!object) return nullptr;
        CSubTrack* known = nullptr;
        eachWithPending<CSubTrack>(step, &track->subTracks, [&](CSubTrack* lane) {
            if (lane->automation() && lane->object == object && lane->param == param) known = lane;
        });
        if (known) return known;
    } else if (track->kind != trackMIDI ||
               (row.target != DawTarget::controller && row.target != DawTarget::pitchBend)) {
        return nullptr;
    }
    static constexpr const char* names[] = {"Volume", "Pan", "Mute"};
    const bool send = squared && param == 0 && object && object->category == 0;
    auto* lane = new CSubTrack(send     ? "Send"
                               : object ? names[param]
                                        : "Controller",
                               laneAutomation);
    lane->object = object;
    lane->param = param;
    lane->visible = 0;
    if (!object)
        lane->target = row.target == DawTarget::controller ? targetController : targetPitchBend;
    return track->addLane(lane, step);
}

std::vector<CPart*> Importer::partsOf(CSongTrack* songTrack) const {
    std::vector<CPart*> parts;
    eachWithPending<CPart>(step, &songTrack->parts, [&](CPart* part) { parts.push_back(part); });
    std::ranges::stable_sort(parts, {}, [](const CPart* part) { return int(part->pos); });
    return parts;
}

/// Points belong to parts: where they stand outside of all, empty ones come.
void Importer::coverPoints(const Made& into, const DawPoints& row) {
    int64_t reached = 0;
    const auto cover = [&](int64_t from, int64_t to) {
        const auto first = std::ranges::find_if(row.points, [&](const DawPoint& p) {
            return toTicks(p.time) >= from && toTicks(p.time) < to;
        });
        if (to <= from || first == row.points.end()) return;
        CPart* part = into.audio ? static_cast<CPart*>(new CAudioPart)
                      : into.songTrack->track->kind == trackDrum
                          ? static_cast<CPart*>(new CDrumPart)
                          : new CMIDIPart;
        if (into.audio) static_cast<CAudioPart*>(part)->multiclip = 1;
        part->id = "Automation";
        part->pos = int(from);
        part->length = int(to - from);
        into.songTrack->addPart(part, step);
    };
    for (CPart* part : partsOf(into.songTrack)) {
        cover(reached, part->pos);
        reached = std::max(reached, int64_t(part->pos) + part->length + 1);
    }
    cover(reached, int64_t(toTicks(row.points.back().time)) + 1 + quarterTicks);
}

bool beginsAt(const std::vector<CPart*>& parts, int tick) {
    return std::ranges::any_of(parts, [tick](const CPart* p) { return p->pos == tick; });
}

bool endsAt(const std::vector<CPart*>& parts, int tick) {
    return std::ranges::any_of(parts,
                               [tick](const CPart* p) { return p->pos + p->length == tick; });
}

void Importer::addLane(const Made& into, const DawPoints& row) {
    coverPoints(into, row);
    bool squared = false;
    CSubTrack* lane = laneOf(into.songTrack->track, row, squared);
    if (!lane) return lose("Automation of what this song has not, on " + into.songTrack->track->id);
    const std::vector<CPart*> parts = partsOf(into.songTrack);
    for (CPart* part : parts) {
        const int from = part->pos, to = saturate(int64_t(from) + part->length);
        EventCollector points;
        const auto put = [&](int tick, double value, bool hold) {
            CEnvEvent* point = createEnvEvent(nullptr, squared ? toFader(value) : float(value));
            point->shape = hold;
            points.add(tick - from - part->offset, point);
        };
        for (size_t i = 0; i < row.points.size(); i++) {
            const DawPoint& p = row.points[i];
            const int tick = toTicks(p.time);
            const DawPoint* next = i + 1 < row.points.size() ? &row.points[i + 1] : nullptr;
            const bool follows = i > 0 && toTicks(row.points[i - 1].time) == tick;
            const bool followed = next && toTicks(next->time) == tick;
            // Of several at the edge of two parts the last one is the later part's alone.
            const bool laters = tick == to && follows && !followed && beginsAt(parts, to);
            const bool earliers = tick == from && followed && endsAt(parts, from);
            if (tick >= from && tick <= to && !laters && !earliers) put(tick, p.value, p.hold);
            if (!next || p.hold) continue;
            for (const int at : {from, to}) {
                const int after = toTicks(next->time);
                if (tick < at && at < after)
                    put(at, p.value + (next->value - p.value) * (at - tick) / (after - tick),
                        false);
            }
        }
        if (!points.empty()) part->setParam(lane->slot, static_cast<CEnvEvent*>(points.takeList()));
    }
}

void Importer::link() {
    step = host->undoStart("Import", seq,
                           {.graph = true,
                            .song = true,
                            .host = HostNotice::pool,
                            .seq = SeqNotice::tracks | SeqNotice::parts});
    clock = begins ? clockOf(song) : clockOf(seq);
    addTimes();
    seq->unselectParts();
    for (size_t i = 0; i < song.tracks.size(); i++) addTrack(i);
    addBuses();
    for (const auto& [index, all] : made)
        for (const DawPoints& row : song.tracks[index].points)
            if (!row.points.empty()) addLane(all.front(), row);
    host->undoEnd(step, true);
    settleSends();
    host->updatePeaks();
    if (begins && hasContent(prog)) frameSong(seq);
}

} // namespace

DawResult importDawProject(CSeq* seq, const CStr& path, std::vector<CStr>& lost,
                           const DawWatch& watch) {
    if (!seq->getProg()) return DawResult::noRoom;
    const ZipReader zip(path.asChar());
    std::string xml;
    DawSong song;
    if (!zip.isOpen() || !zip.read(dawProjectEntry, mostXmlBytes, xml) ||
        !readDawProject(xml, song))
        return DawResult::unreadable;
    xml.clear();
    xml.shrink_to_fit();
    Importer importer(seq, zip, song, lost);
    const DawResult result = importer.prepare(watch);
    if (result == DawResult::good) importer.link();
    return result;
}
