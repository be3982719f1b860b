#include "audiofiles/CSample.h"
#include "base/Paths.h"
#include "base/SafeFile.h"
#include "common/Curves.h"
#include "common/fx/CEQ.h"
#include "effects/CEffect.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/CompTypes.h"
#include "engine/MidiBytes.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"
#include "interchange/DawClock.h"
#include "interchange/DawDevices.h"
#include "interchange/DawFiles.h"
#include "interchange/DawTables.h"
#include "interchange/DawUnits.h"
#include "interchange/DawXml.h"
#include "interchange/ScratchFolder.h"
#include "interchange/ZipFile.h"
#include "plugins/CVST.h"
#include "plugins/StateFiles.h"
#include "project/PresetFiles.h"
#include "sequencer/edit/StripEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/RowLoops.h"
#include "sequencer/song/TrackRouting.h"

#include <map>
#include <set>

namespace {

enum StripParam : int { paramVolume = 0, paramPan = 1, paramMute = 2 };

std::string text(const CStr& s) {
    return s.asChar();
}

/// Makes the plain song, and lists the files that go with it.
class Exporter {
public:
    Exporter(CSeq* s, std::vector<CStr>& leftOut) : seq(s), host(s->host), lost(leftOut) {}
    bool collect(); ///< false after a message: an instrument could not be written

    struct File {
        std::string entry, path;
        bool packed;
    };
    DawSong song;
    std::vector<File> files;

private:
    void addTimes();
    void addTracks();
    void addBuses();
    bool addDevices(DawTrack& t, CComp* instrument, COutputChannel* strip);
    bool addState(DawTrack& t, const DawDevice& device, const char* ext,
                  const std::function<bool(const CStr&)>& save);
    void addStrip(DawTrack& t, COutputChannel* strip);
    static void addBands(DawTrack& t, const COutputChannel* strip);
    void addPlugin(DawTrack& t, CVST* plugin, const char* role);
    void addFile(DawTrack& t, const DawDevice& device, const std::string& name);
    void addSends();
    void addParts(DawTrack& t, CSongTrack* songTrack);
    void addEvents(DawClip& clip, CTrack* track, CPart* part, int shift);
    void addDrum(DawClip& clip, CTrack* track, const CDrumEvent* event, int tick);
    static void addNote(DawClip& clip, const CBaseEvent* event, int tick, int message, int length);
    static void addMessage(DawClip& clip, int tick, int message);
    void addAudio(DawClip& clip, CAudioPart* part, int shift);
    DawClip clipOf(const CAudioEvent* event, int songTick);
    std::string fileOf(CSample* sample);
    void addLanes(DawTrack& t, CSongTrack* songTrack);
    bool targetOf(CTrack* track, const CSubTrack* lane, DawPoints& row) const;
    void addPoints(DawPoints& row, CPart* part, int slot) const;
    double valueOf(const DawPoints& row, float value) const;
    void lose(const CStr& what);
    CComp* instrumentOf(CTrack* track) const;

    CSeq* seq;
    CQV* host;
    std::vector<CStr>& lost;
    const ScratchFolder scratch;
    BeatClock clock;
    std::map<const COutputChannel*, size_t> stripTracks; ///< index of the song's tracks
    std::map<const CObject*, std::string> sendIds;
    std::set<std::string> squared;              ///< ids of what counts squared
    std::map<std::string, std::string> entries; ///< of audio, by path
    std::set<std::string> taken;
    bool good = true;
};

void Exporter::lose(const CStr& what) {
    for (const CStr& known : lost)
        if (known == what) return;
    lost.push_back(what);
}

void Exporter::addTimes() {
    CSeqProg* prog = seq->getProg();
    song.application = "Sondrava";
    song.title = text(changeFileExt(extractFileName(host->projectFile), ""));
    song.bpm = double(host->songTempo);
    seq->getTimeSig(song.num, song.den);
    for (const auto* t : prog->tempos)
        song.tempos.push_back(
            {toBeats(t->pos), double(t->getTempo()), t->ramp && seq->getNextTempoChange(t->pos)});
    clock = clockOf(song);
    for (const auto* s : prog->timesigs)
        song.signatures.push_back({toBeats(s->pos), s->getNum(), s->getDen()});
    // Others begin with what stands at the head, whatever points there are.
    if (!song.tempos.empty() && song.tempos.front().time <= 0.0) song.bpm = song.tempos.front().bpm;
    if (!song.signatures.empty() && song.signatures.front().time <= 0.0)
        song.num = song.signatures.front().num, song.den = song.signatures.front().den;
    for (auto* m : prog->markers) song.markers.push_back({toBeats(m->pos), text(m->id)});
}

/// What an instrument track plays.
CComp* Exporter::instrumentOf(CTrack* track) const {
    CComp* to = track->kind == trackMIDI ? trackTarget(seq, track) : nullptr;
    const bool device = to && (to->type == compMIDIOut || to->type == compMIDIChs);
    return to && to->output() && !device ? to : nullptr;
}

void Exporter::addStrip(DawTrack& t, COutputChannel* strip) {
    const std::string n = std::to_string(song.tracks.size());
    t.hasChannel = true;
    t.channelId = "channel" + n;
    t.volumeId = "volume" + n;
    t.panId = "pan" + n;
    t.muteId = "mute" + n;
    squared.insert(t.volumeId);
    if (!strip) return;
    stripTracks[strip] = song.tracks.size();
    t.volume = toGain(strip->vol);
    t.pan = (double(strip->pan) + 1.0) / 2.0;
    t.mute = strip->mute;
    addBands(t, strip);
    if (strip->trim != 0.0f) lose("The trim of " + strip->comp->id);
}

void Exporter::addBands(DawTrack& t, const COutputChannel* strip) {
    if (std::ranges::none_of(strip->eq, [](const CEQ* band) { return band->active != 0; })) return;
    for (const CEQ* band : strip->eq)
        t.bands.push_back({dawBandTypes[asMinMax(band->getFilterType(), 0, eqNotch)],
                           double(band->getFrequency()), double(band->getGain()),
                           double(band->getQ()), band->active != 0});
}

bool Exporter::addState(DawTrack& t, const DawDevice& device, const char* ext,
                        const std::function<bool(const CStr&)>& save) {
    const std::string name = std::to_string(files.size()) + ext, path = scratch.file(name);
    if (!save(path.c_str())) return good = false;
    addFile(t, device, name);
    return true;
}

/// A device with a state that has been written.
void Exporter::addFile(DawTrack& t, const DawDevice& device, const std::string& name) {
    files.push_back({"devices/" + name, scratch.file(name), true});
    t.devices.push_back(device);
    t.devices.back().state = files.back().entry;
}

void Exporter::addPlugin(DawTrack& t, CVST* plugin, const char* role) {
    const PluginFormat format = PluginFile(plugin->fileName).format();
    const char* element = pluginElementOf(format);
    if (!element || !plugin->opened() || plugin->failed()) return lose("Plug-in " + plugin->id);
    const DawDevice device{element, text(plugin->loaded()->product()), dawIdOf(plugin), role, "",
                           true};
    const std::string name = std::to_string(files.size()) + stateExtension(format);
    if (!plugin->saveState(scratch.file(name).c_str())) {
        lose("What is set in " + plugin->id);
        t.devices.push_back(device);
        return;
    }
    addFile(t, device, name);
}

bool Exporter::addDevices(DawTrack& t, CComp* instrument, COutputChannel* strip) {
    const auto add = [&](CComp* comp, const char* role, const char* id, const char* ext,
                         const std::function<bool(const CStr&)>& save) {
        return addState(t, {"BuiltinDevice", text(comp->id), id, role, "", true}, ext, save);
    };
    if (instrument && instrument->type == compSampler) {
        auto* sampler = static_cast<CSampler*>(instrument);
        if (sampler->progs.getCount() > 1)
            lose("Programs of " + sampler->id + " but the current one");
        if (sampler->getProg())
            add(sampler, "instrument", dawSampler, ".qvs",
                [&](const CStr& path) { return saveProgram(sampler, path); });
    } else if (instrument && instrument->type == compVST) {
        addPlugin(t, static_cast<CVST*>(instrument), "instrument");
    } else if (instrument) {
        lose("What is set in " + instrument->id);
    }
    if (!strip) return good;
    for (auto* insert : strip->inserts) {
        if (insert->wet != 1.0f) lose("How much of " + insert->id + " is heard");
        const size_t before = t.devices.size();
        if (insert->type == compEffect && static_cast<CEffect*>(insert)->getProg())
            add(insert, "audioFX", dawRack, ".qve",
                [&](const CStr& path) { return saveProgram(static_cast<CEffect*>(insert), path); });
        else if (insert->type == compVST)
            addPlugin(t, static_cast<CVST*>(insert), "audioFX");
        else
            lose("What is set in " + insert->id);
        if (t.devices.size() > before) t.devices.back().on = insert->enabled != 0;
    }
    return good;
}

void Exporter::addTracks() {
    std::map<const CTrack*, int> places;
    std::set<const CComp*> told;
    for (auto* songTrack : seq->getProg()->tracks) {
        CTrack* track = songTrack->track;
        DawTrack t;
        places[track] = int(song.tracks.size());
        t.id = "track" + std::to_string(song.tracks.size());
        t.name = text(track->id);
        t.colour = track->colour;
        t.isFolder = track->kind == trackFolder;
        t.content = t.isFolder ? "tracks" : track->kind == trackAudio ? "audio" : "notes";
        const auto parent = places.find(track->folder);
        if (parent != places.end()) t.parent = parent->second;
        CComp* instrument = instrumentOf(track);
        COutputChannel* strip = instrument ? instrument->output() : track->output();
        if (instrument && !told.insert(instrument).second) {
            lose(track->id + " plays the instrument of another track: it comes without it");
            instrument = nullptr;
            strip = nullptr;
        }
        if (!t.isFolder) addStrip(t, strip);
        if (!t.isFolder) addDevices(t, instrument, strip);
        if (track->kind == trackDrum)
            addState(t, {"BuiltinDevice", "Kit", dawKit, "instrument", "", true}, ".qvs",
                     [&](const CStr& path) { return saveKit(track, path); });
        t.mute = t.mute || songTrack->muted();
        t.solo = songTrack->soloed();
        if (track->arp->enabled) lose("The arpeggiator of " + track->id);
        if (track->groove.amount != 0.0f) lose("The swing of " + track->id);
        if (!songTrack->freezeItems.empty()) lose("That " + track->id + " is frozen");
        song.tracks.push_back(std::move(t));
    }
    size_t place = 0;
    for (auto* songTrack : seq->getProg()->tracks) addParts(song.tracks[place++], songTrack);
}

/// Groups, send buses and the first audio out.
void Exporter::addBuses() {
    const auto add = [&](CComp* comp, const char* role) {
        DawTrack t;
        t.id = "track" + std::to_string(song.tracks.size());
        t.name = text(comp->id);
        t.content = "audio";
        t.role = role;
        addStrip(t, comp->output());
        addDevices(t, nullptr, comp->output());
        song.tracks.push_back(std::move(t));
    };
    for (auto* comp : host->comps)
        if (comp->type == compGroupCh && comp->output()) add(comp, "submix");
    for (auto* bus : host->sends)
        if (bus->output()) add(bus, "effect");
    if (CComp* out = host->getAudioOut()) add(out, "master");
}

void Exporter::addSends() {
    for (const auto& [strip, at] : stripTracks) {
        auto* channel = const_cast<COutputChannel*>(strip);
        CComp* to = stripTarget(host, channel);
        const auto led = to && to->output() ? stripTracks.find(to->output()) : stripTracks.end();
        if (led != stripTracks.end())
            song.tracks[at].destination = song.tracks[led->second].channelId;
        int bus = 0;
        for (auto* comp : host->sends) {
            CSend* send = channel->sendLevels[bus++];
            if (!send || send->level == 0.0f || !comp->output()) continue;
            const std::string id = "send" + std::to_string(at) + "to" + std::to_string(bus);
            sendIds[send] = id;
            squared.insert(id);
            song.tracks[at].sends.push_back(
                {song.tracks[stripTracks[comp->output()]].channelId, id, toGain(send->level)});
        }
    }
}

// Parts.

void Exporter::addNote(DawClip& clip, const CBaseEvent* event, int tick, int message, int length) {
    const int count = std::max(1, int(event->style.repeats));
    const auto start = [&](int i) { return int(int64_t(std::max(length, 1)) * i / count); };
    for (int i = 0; i < count; i++)
        clip.notes.push_back({toBeats(tick + start(i)), toBeats(start(i + 1) - start(i)),
                              chByte(message), asByte1(message) & 127,
                              double(asByte2(message)) / double(mostData)});
}

void Exporter::addMessage(DawClip& clip, int tick, int message) {
    DawPoints row;
    row.channel = chByte(message);
    double value = double(asByte2(message) / mostData);
    switch (statusByte(message)) {
    case midiController:
        row.target = DawTarget::controller;
        row.number = asByte1(message) & 127;
        break;
    case midiAftertouch:
        row.target = DawTarget::polyPressure;
        row.number = asByte1(message) & 127;
        break;
    case midiPressure:
        row.target = DawTarget::pressure;
        value = double(asByte1(message) / mostData);
        break;
    case midiProgram:
        row.target = DawTarget::program;
        value = asByte1(message);
        break;
    case midiPitchBend:
        row.target = DawTarget::pitchBend;
        value = double((asByte1(message) & 127) | (asByte2(message) & 127) << 7) / mostBend;
        break;
    default:
        return;
    }
    const auto same = [&](const DawPoints& p) {
        return p.target == row.target && p.channel == row.channel && p.number == row.number;
    };
    auto found = std::ranges::find_if(clip.points, same);
    if (found == clip.points.end()) found = clip.points.insert(found, row);
    found->points.push_back({toBeats(tick), value, true});
}

void Exporter::addDrum(DawClip& clip, CTrack* track, const CDrumEvent* event, int tick) {
    const int key = event->sound + firstDrumKey;
    if (key > 127) return lose("Hits of sounds beyond the keyboard on " + track->id);
    if (event->pan != 0.0f || event->tune != 1.0f)
        lose("Pan and tune of single hits on " + track->id);
    const int velocity = asMinMax(int(std::lround(event->velocity * mostData)), 1, 127);
    addNote(clip, event, tick, asData(midiNoteOn, key, velocity), event->length);
}

void Exporter::addEvents(DawClip& clip, CTrack* track, CPart* part, int shift) {
    const PlayedEvents played(part, saturate(int64_t(seq->getTicks(part)) - part->offset));
    int64_t at = shift;
    for (const CBaseEvent* e = played.list(); e; e = e->next) {
        at += e->delta;
        const int tick = saturate(at);
        if (e->style.muted || e->style.chance == 0) {
            lose("Muted notes");
            continue;
        }
        if (e->style.chance != mostChance) lose("That notes play by chance: they always do");
        if (e->style.flamMs) lose("Flams");
        if (part->type == partDrum) {
            addDrum(clip, track, static_cast<const CDrumEvent*>(e), tick);
            continue;
        }
        const auto* event = static_cast<const CMIDIEvent*>(e);
        const int message = track->setCh(event->data);
        if (noteOn(message))
            addNote(clip, e, tick, message, event->length);
        else
            addMessage(clip, tick, message);
    }
}

std::string Exporter::fileOf(CSample* sample) {
    const std::string path = text(sample->filename);
    if (const auto known = entries.find(path); known != entries.end()) return known->second;
    if (!fileExists(sample->filename) || sample->takePending) {
        lose("Audio that is not there: " + sample->filename);
        return entries[path] = "";
    }
    std::string stem = text(changeFileExt(extractFileName(sample->filename), ""));
    for (char& c : stem)
        if (static_cast<unsigned char>(c) < ' ' || c == '\\' || c == 127) c = '_';
    const std::string ext = text(extractFileExt(sample->filename));
    std::string entry = "audio/" + stem + ext;
    for (int i = 1; !taken.insert(entry).second; i++)
        entry = "audio/" + stem + "-" + std::to_string(i) + ext;
    files.push_back({entry, path, false});
    return entries[path] = entry;
}

/// The clip of an event, at 0; without a file if its sample has none.
DawClip Exporter::clipOf(const CAudioEvent* event, int songTick) {
    DawClip clip;
    CSample* sample = event->sample;
    if (!sample) return clip;
    const std::string file = fileOf(sample);
    if (file.empty()) return clip;
    DawAudio a;
    a.file = file;
    a.channels = sample->chs;
    a.rate = int(sample->rate);
    a.fileSeconds = sample->frames / double(sample->rate);
    a.startSeconds = event->start / double(sample->rate);
    const double seconds = (double(event->end) - event->start + 1) / double(sample->rate);
    const double semitones = event->semitones + double(event->fine);
    if (event->mode == 0) {
        if (semitones != 0.0) a.algorithm = "repitch";
        a.speed = std::exp2(semitones / 12.0);
        const double at = toBeats(songTick);
        clip.duration = clock.toBeats(clock.toSeconds(at) + seconds / a.speed) - at;
    } else {
        a.algorithm = event->mode == 1 ? "repitch" : "stretch";
        clip.duration = toBeats(event->ticks);
        a.warps = {{0.0, a.startSeconds}, {clip.duration, a.startSeconds + seconds}};
    }
    const auto fixed = [&](DawTarget target, double value) {
        clip.points.push_back({target, "", 0, 0, {{0.0, value, true}}});
    };
    if (event->gain != 1.0f) fixed(DawTarget::gain, double(event->gain));
    if (event->pan != 0.0f) fixed(DawTarget::pan, (double(event->pan) + 1.0) / 2.0);
    if (event->mode != 0 && semitones != 0.0) fixed(DawTarget::transpose, semitones);
    clip.fadeInSeconds = double(event->fadeInMs) / 1000.0;
    clip.fadeOutSeconds = double(event->fadeOutMs) / 1000.0;
    if (event->reverse) lose("That clips play backward");
    if ((event->fadeInMs > 0 && event->fadeInCurve != 0) ||
        (event->fadeOutMs > 0 && event->fadeOutCurve != 0))
        lose("Bends of fades");
    clip.audio.push_back(std::move(a));
    return clip;
}

/// A single clip from the part's start on becomes the outer one itself.
void Exporter::addAudio(DawClip& clip, CAudioPart* part, int shift) {
    int64_t at = shift;
    for (CBaseEvent* e = part->getEvents(); e; e = e->next) {
        at += e->delta;
        const int tick = saturate(at);
        DawClip inner = clipOf(static_cast<CAudioEvent*>(e),
                               saturate(int64_t(part->pos) + part->offset - shift + tick));
        if (inner.audio.empty()) continue;
        const bool single = !part->multiclip && !part->getEvents()->next;
        if (single && tick == 0 && clip.playStart == 0.0 &&
            toTicks(inner.duration) == seq->getTicks(part)) {
            inner.time = clip.time;
            inner.name = clip.name;
            inner.colour = clip.colour;
            inner.enabled = clip.enabled;
            clip = std::move(inner);
            return;
        }
        inner.time = toBeats(tick);
        clip.clips.push_back(std::move(inner));
    }
}

void Exporter::addParts(DawTrack& t, CSongTrack* songTrack) {
    for (CPart* part : songTrack->parts) {
        DawClip clip;
        const int shift = std::max(0, int(part->offset));
        clip.name = text(part->id);
        clip.colour = part->colour;
        clip.time = toBeats(part->pos);
        clip.duration = toBeats(seq->getTicks(part));
        clip.playStart = toBeats(shift - part->offset);
        clip.enabled = !part->muted();
        if (part->takes) lose("Takes of " + part->id + " but the one that plays");
        if (part->type == partAudio)
            addAudio(clip, static_cast<CAudioPart*>(part), shift);
        else
            addEvents(clip, songTrack->track, part, shift);
        t.clips.push_back(std::move(clip));
    }
}

// Automation.

bool Exporter::targetOf(CTrack* track, const CSubTrack* lane, DawPoints& row) const {
    if (lane->target == targetController || lane->target == targetPitchBend) {
        row.target =
            lane->target == targetController ? DawTarget::controller : DawTarget::pitchBend;
        row.number = lane->target == targetController ? lane->param & 127 : 0;
        row.channel = std::max<int>(track->channel, 0);
        return true;
    }
    row.target = DawTarget::parameter;
    const CObject* object = lane->object;
    if (const auto send = sendIds.find(object); send != sendIds.end()) row.parameter = send->second;
    for (const auto& [strip, at] : stripTracks) {
        if (strip != object) continue;
        const DawTrack& t = song.tracks[at];
        if (lane->param == paramVolume) row.parameter = t.volumeId;
        if (lane->param == paramPan) row.parameter = t.panId;
        if (lane->param == paramMute) row.parameter = t.muteId;
        row.number = lane->param == paramMute;
    }
    return !row.parameter.empty();
}

double Exporter::valueOf(const DawPoints& row, float value) const {
    return squared.contains(row.parameter) ? toGain(value) : double(value);
}

/// The points that play: what stands outside of the part is cut off, where a way crosses its edge
/// there is a point on it, and bent ways become straight pieces. The last one holds.
void Exporter::addPoints(DawPoints& row, CPart* part, int slot) const {
    constexpr int pieces = 16;
    const int from = part->pos, to = saturate(int64_t(from) + seq->getTicks(part));
    const size_t first = row.points.size();
    const auto put = [&](double tick, float value, bool hold) {
        if (tick >= from && tick <= to)
            row.points.push_back({toBeats(tick), valueOf(row, value), hold});
    };
    int64_t at = int64_t(from) + part->offset;
    const CEnvEvent* before = nullptr;
    double beforeTick = 0.0;
    for (const CBaseEvent* e = part->getParam(slot); e; e = e->next) {
        const auto* point = static_cast<const CEnvEvent*>(e);
        at += e->delta;
        const auto tick = double(at);
        if (before) {
            const auto between = [&](double where) {
                const double t = (where - beforeTick) / std::max(tick - beforeTick, 1.0);
                put(where,
                    automationPoint(before->shape, before->value, point->value, float(t),
                                    point->curve),
                    before->shape == 1);
            };
            const bool bent = before->shape == 0 && point->curve != 0.0f;
            if (beforeTick < from && tick > from) between(from);
            for (int i = 1; bent && i < pieces; i++)
                between(beforeTick + (tick - beforeTick) * i / pieces);
            if (beforeTick < to && tick > to) between(to);
        }
        put(tick, point->value, point->shape == 1);
        before = point;
        beforeTick = tick;
    }
    std::stable_sort(row.points.begin() + long(first), row.points.end(),
                     [](const DawPoint& a, const DawPoint& b) { return a.time < b.time; });
    if (row.points.size() > first) row.points.back().hold = true;
}

void Exporter::addLanes(DawTrack& t, CSongTrack* songTrack) {
    for (auto* lane : songTrack->track->subTracks) {
        if (!lane->automation() || lane->bypass) continue;
        DawPoints row;
        const bool known = targetOf(songTrack->track, lane, row);
        for (CPart* part : songTrack->parts)
            if (known && part->getParam(lane->slot))
                addPoints(row, part, lane->slot);
            else if (part->getParam(lane->slot))
                lose("Automation of " + lane->id + " on " + songTrack->track->id);
        if (!row.points.empty()) t.points.push_back(std::move(row));
    }
}

bool Exporter::collect() {
    if (scratch.path.empty()) return false;
    addTimes();
    addTracks();
    addBuses();
    addSends();
    size_t place = 0;
    for (auto* songTrack : seq->getProg()->tracks) addLanes(song.tracks[place++], songTrack);
    return good;
}

} // namespace

DawResult exportDawProject(CSeq* seq, const CStr& path, std::vector<CStr>& lost,
                           const DawWatch& watch) {
    Exporter exporter(seq, lost);
    if (!exporter.collect()) return DawResult::notWritten;
    SafeFile target(path);
    ZipWriter zip(target.path().asChar());
    zip.add(dawProjectEntry, writeDawProject(exporter.song));
    zip.add(dawMetadataEntry, writeDawMetadata(exporter.song));
    double done = 0.0;
    bool cancelled = false;
    for (const Exporter::File& f : exporter.files) {
        const CStr name = extractFileName(f.path.c_str());
        const auto told = [&](double part) {
            cancelled = watch && !watch(name, float((done + part) / double(exporter.files.size())));
            return !cancelled;
        };
        if (!told(0.0) || !zip.addFile(f.entry, f.path, f.packed, told)) break;
        done += 1.0;
    }
    if (cancelled) return DawResult::cancelled;
    return zip.close() && target.commit() ? DawResult::good : DawResult::notWritten;
}
