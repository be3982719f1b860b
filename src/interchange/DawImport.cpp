#include "base/Paths.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "interchange/DawClock.h"
#include "interchange/DawDevices.h"
#include "interchange/DawFiles.h"
#include "interchange/DawParts.h"
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

CStr text(const std::string& s) {
    return s.c_str();
}

/// Brings one song in.
class Importer {
public:
    Importer(CSeq* s, const ZipReader& archive, DawSong& from, const PluginList* known,
             std::vector<CStr>& leftOut)
        : seq(s), host(s->host), prog(s->getProg()), zip(archive), song(from), lost(leftOut),
          begins(!hasContent(prog)), devices(host, zip, scratch, known, lost) {
        for (const std::string& line : song.lost) lost.push_back(text(line));
    }

    DawResult prepare(const DawWatch& watch); ///< files, while nothing of the song changes
    void link();

private:
    /// What came of a track of the file.
    struct Made {
        CSongTrack* songTrack;
        bool audio;
    };

    bool bring(const std::string& name, bool external, const DawWatch& watch);
    bool haveRoom() const;
    std::vector<int> kindsOf(const DawTrack& t) const;
    void addTimes();
    void addTrack(size_t index, DawParts& parts);
    CGroupCh* newGroup(size_t index);
    bool leadsInCircle(const DawTrack& t) const;
    void addGroups();
    void leadToGroup(const DawTrack& t, const COutputChannel* strip);
    void addBuses();
    CComp* addInstrument(const DawTrack& t, CTrack* track);
    void setStrip(size_t index, COutputChannel* strip);
    CObject* targetOf(const DawPoints& row, int& param, bool& squared) const;
    CSubTrack* laneOf(CTrack* track, const DawPoints& row, bool& squared);
    std::vector<CPart*> partsOf(CSongTrack* songTrack) const;
    void coverPoints(const Made& into, const DawPoints& row);
    void addLane(const Made& into, const DawPoints& row);
    void settleSends() const;
    void lose(const CStr& what) { addLine(lost, what); }

    CSeq* seq;
    CQV* host;
    CSeqProg* prog;
    const ZipReader& zip;
    DawSong& song;
    std::vector<CStr>& lost;
    const bool begins;
    const ScratchFolder scratch;
    CUndo* step = nullptr;
    BeatClock clock; ///< of the song that it comes into
    DawSamples samples;
    std::map<size_t, std::vector<Made>> made;
    DawDevices devices;
    std::map<size_t, COutputChannel*> strips; ///< of all tracks, groups and buses
    std::map<std::string, CGroupCh*> groups;  ///< by channel id
    std::map<std::string, int> buses;         ///< place among the sends, by channel id
};

// Files.

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

/// What the file tells, or a synthesizer in its place; null where it tells none.
CComp* Importer::addInstrument(const DawTrack& t, CTrack* track) {
    const bool told =
        std::ranges::find(t.devices, "instrument", &DawDevice::role) != t.devices.end();
    std::unique_ptr<CComp> played = told ? devices.instrumentOf(t) : nullptr;
    if (!played) return told ? addTrackInstrument(seq, track, step) : nullptr;
    CComp* instrument = played.release();
    linkInstrument(instrument, track, step);
    return instrument;
}

/// Of a strip that is not linked yet.
void Importer::setStrip(size_t index, COutputChannel* strip) {
    const DawTrack& t = song.tracks[index];
    devices.fillStrip(t, strip);
    if (!strip) return;
    strips[index] = strip;
    if (t.volume > 1.0) lose("Levels above 0 dB");
    strip->vol = toFader(t.volume);
    strip->setVol(strip->vol, false);
    strip->pan = float(t.pan * 2.0 - 1.0);
    strip->setPan(strip->pan, false);
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

void Importer::addTrack(size_t index, DawParts& parts) {
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
        if (kind != trackFolder) setStrip(index, strip);
        leadToGroup(t, strip);
        if (kind == trackMIDI) track->channel = channelOf(t);
        if (kind == trackDrum)
            for (const DawDevice& d : t.devices)
                if (const std::string kit = d.id == dawKit ? devices.stateOf(d) : ""; !kit.empty())
                    seq->openDrumBank(track, kit.c_str(), step);
        made[index].push_back({songTrack, kind == trackAudio});
        for (const DawClip& clip : t.clips)
            if (CPart* part = kind == trackFolder ? nullptr : parts.make(clip, track))
                songTrack->addPart(part, step);
    }
}

/// A group or send bus with the strip of a track of the file.
CGroupCh* Importer::newGroup(size_t index) {
    auto* group = new CGroupCh(host);
    group->init();
    group->id = text(song.tracks[index].name);
    group->createBuffers(host->frames);
    setStrip(index, group->output());
    group->output()->mute = song.tracks[index].mute;
    return group;
}

/// Whether a group leads, by the way that the file tells, to itself.
bool Importer::leadsInCircle(const DawTrack& t) const {
    std::string at = t.destination;
    for (size_t i = 0; i <= song.tracks.size(); i++) {
        const auto next = std::ranges::find_if(song.tracks, [&](const DawTrack& other) {
            return !at.empty() && other.role == "submix" && other.channelId == at;
        });
        if (next == song.tracks.end()) return false;
        at = next->destination;
    }
    return true;
}

/// All of them before they are led to each other.
void Importer::addGroups() {
    const auto isGroup = [](const DawTrack& t) { return t.role == "submix"; };
    for (size_t i = 0; i < song.tracks.size(); i++) {
        if (!isGroup(song.tracks[i])) continue;
        CGroupCh* group = newGroup(i);
        placeInstrument(group, seq, step);
        step->asAdd(group, &host->comps);
        groups.try_emplace(song.tracks[i].channelId, group);
    }
    CComp* out = host->getAudioOut();
    for (const DawTrack& t : song.tracks) {
        const auto group = isGroup(t) ? groups.find(t.channelId) : groups.end();
        if (group == groups.end()) continue;
        const auto next = groups.find(t.destination);
        CComp* to = next == groups.end() || leadsInCircle(t) ? out : next->second;
        COutputChannel* from = group->second->output();
        if (CAudioCable* cable = to ? createAudioCable(to, from, nullptr) : nullptr)
            step->asAdd(cable, &to->audioCables);
    }
}

/// The cable that has come with a strip leads to its group in place of the out.
void Importer::leadToGroup(const DawTrack& t, const COutputChannel* strip) {
    const auto group = groups.find(t.destination);
    CComp* out = host->getAudioOut();
    if (!strip || !out || group == groups.end()) return;
    for (auto* item : step->items) {
        if (!item->object || item->addTo != &out->audioCables) continue;
        auto* cable = static_cast<CAudioCable*>(item->object);
        if (cable->fromChannel != strip) continue;
        cable->toComp = group->second;
        cable->toChannel = group->second->input();
        item->addTo = &group->second->audioCables;
    }
}

/// Send buses, behind those there are.
void Importer::addBuses() {
    int place = host->sends.getCount();
    for (size_t i = 0; i < song.tracks.size(); i++) {
        const DawTrack& t = song.tracks[i];
        if (t.role == "master" && (t.volume != 1.0 || !t.devices.empty() || !t.bands.empty()))
            lose("Level and effects of the main out");
        if (t.role != "effect") continue;
        if (place >= maxSends) {
            lose("Send buses beyond the 32nd");
            continue;
        }
        CGroupCh* bus = newGroup(i);
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
    for (const auto& [index, strip] : strips)
        for (const DawSend& s : song.tracks[index].sends)
            if (const auto bus = buses.find(s.destination); bus != buses.end())
                strip->sendLevels[bus->second]->level = toFader(s.level);
}

// Automation.

/// What a row moves, and whether that counts squared; null for what is not here.
CObject* Importer::targetOf(const DawPoints& row, int& param, bool& squared) const {
    for (const auto& [index, strip] : strips) {
        const DawTrack& t = song.tracks[index];
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
    addTimes();
    seq->unselectParts();
    addGroups();
    DawParts parts(begins ? clockOf(song) : clockOf(seq), samples, lost);
    for (size_t i = 0; i < song.tracks.size(); i++) addTrack(i, parts);
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
                           const DawWatch& watch, const PluginList* plugins) {
    if (!seq->getProg()) return DawResult::noRoom;
    const ZipReader zip(path.asChar());
    std::string xml;
    DawSong song;
    if (!zip.isOpen() || !zip.read(dawProjectEntry, mostXmlBytes, xml) ||
        !readDawProject(xml, song))
        return DawResult::unreadable;
    xml.clear();
    xml.shrink_to_fit();
    Importer importer(seq, zip, song, plugins, lost);
    const DawResult result = importer.prepare(watch);
    if (result == DawResult::good) importer.link();
    return result;
}
