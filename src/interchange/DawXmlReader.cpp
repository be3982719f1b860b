#include "interchange/DawClock.h"
#include "interchange/DawTables.h"
#include "interchange/DawXml.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <map>
#include <pugixml.hpp>

namespace {

using Node = pugi::xml_node;

constexpr double latest = 1e6; ///< quarter notes or seconds
constexpr int deepestClip = 8, deepestLanes = 16, deepestTrack = 64;
constexpr size_t mostTracks = 4096;
constexpr int keys = 128, channels = 16;

double number(Node node, const char* name, double otherwise, double low, double high) {
    const char* text = node.attribute(name).value();
    const char* end = text + std::strlen(text);
    while (text != end && (*text == ' ' || *text == '+')) ++text;
    double value = 0.0;
    if (text == end || std::from_chars(text, end, value).ec != std::errc() || std::isnan(value))
        return otherwise;
    return std::clamp(value, low, high);
}
double time(Node node, const char* name, double otherwise = 0.0) {
    return number(node, name, otherwise, -latest, latest);
}
int whole(Node node, const char* name, int otherwise, int low, int high) {
    return int(std::lround(number(node, name, otherwise, low, high)));
}
std::string word(Node node, const char* name) {
    return node.attribute(name).value();
}
bool is(Node node, const char* name) {
    return std::strcmp(node.name(), name) == 0;
}
int colourOf(Node node) {
    const std::string text = word(node, "color");
    unsigned value = 0;
    if (text.size() < 7 || text[0] != '#') return -1;
    const auto end = std::from_chars(text.data() + 1, text.data() + 7, value, 16).ptr;
    return end == text.data() + 7 ? int(value) : -1;
}

/// What times of a row count in, and from where: `base` is where its 0 stands in the song.
struct Frame {
    bool seconds = false;
    double base = 0.0;
};

/// The content of a clip: its frame, and where in it the clip begins, in both units.
struct Content {
    Frame frame;
    double beats = 0.0, seconds = 0.0;
};

bool unitOf(Node node, const char* name, bool seconds) {
    const std::string text = word(node, name);
    return text.empty() ? seconds : text == "seconds";
}

/// Reads one song.
class Reader {
public:
    Reader(Node projectRoot, DawSong& into) : root(projectRoot), song(into) {}
    void read();

private:
    void readTransport();
    void readTempos();
    void readTracks(Node parent, int folder, int depth);
    void readChannel(Node channel, DawTrack& t);
    void readDevices(Node devices, DawTrack& t);
    static void readBands(Node equaliser, bool on, DawTrack& t);
    void readLanes(Node node, Frame frame, int track, int depth);
    void readClip(Node node, const Frame& frame, std::vector<DawClip>& into, int depth);
    void readContent(Node node, const Content& content, DawClip& clip, int depth);
    static void readAudio(Node audio, double startSeconds, DawClip& clip);
    void readWarps(Node warps, const Content& content, DawClip& clip);
    void readNotes(Node notes, const Frame& frame, DawClip& clip) const;
    bool readPoints(Node points, const Frame& frame, DawPoints& row) const;
    double beats(const Frame& frame, double at) const;
    int trackOf(Node node, int otherwise) const;
    double gainOf(Node parameter) const;
    void lose(const std::string& what);

    const Node root;
    DawSong& song;
    BeatClock clock;
    std::map<std::string, int> trackById;
};

void Reader::lose(const std::string& what) {
    if (std::ranges::find(song.lost, what) == song.lost.end()) song.lost.push_back(what);
}

double Reader::beats(const Frame& frame, double at) const {
    if (!frame.seconds) return at;
    return clock.toBeats(clock.toSeconds(frame.base) + at) - frame.base;
}

int Reader::trackOf(Node node, int otherwise) const {
    const auto found = trackById.find(word(node, "track"));
    return found == trackById.end() ? otherwise : found->second;
}

void Reader::readTransport() {
    const Node transport = root.child("Transport"), signature = transport.child("TimeSignature");
    song.bpm = number(transport.child("Tempo"), "value", 120.0, 1.0, 9999.0);
    song.num = whole(signature, "numerator", 4, 1, 960);
    song.den = whole(signature, "denominator", 4, 1, 960);
}

void Reader::readTempos() {
    const Node arrangement = root.child("Arrangement");
    const Node tempos = arrangement.child("TempoAutomation");
    if (unitOf(tempos, "timeUnit", unitOf(arrangement, "timeUnit", false)))
        return lose("Tempo changes that are placed in seconds");
    for (const Node p : tempos.children("RealPoint")) {
        const bool ramp = word(p, "interpolation") == "linear";
        song.tempos.push_back(
            {std::max(time(p, "time"), 0.0), number(p, "value", 120.0, 1.0, 9999.0), ramp});
    }
    clock = clockOf(song);
}

double Reader::gainOf(Node parameter) const {
    const std::string unit = word(parameter, "unit");
    const double value = number(parameter, "value", 1.0, -1000.0, 1000.0);
    return unit == "decibel" ? std::pow(10.0, value / 20.0) : std::max(value, 0.0);
}

/// The first equaliser is that of the strip, whatever stands before it.
void Reader::readDevices(Node devices, DawTrack& t) {
    for (const Node d : devices.children()) {
        if (d.type() != pugi::node_element) continue;
        const auto enabled = d.child("Enabled").attribute("value");
        const bool on = !enabled || enabled.as_bool();
        if (is(d, "Equalizer") && t.bands.empty() && d.child("Band")) {
            readBands(d, on, t);
            continue;
        }
        t.devices.push_back({d.name(), word(d, "deviceName"), word(d, "deviceID"),
                             word(d, "deviceRole"), word(d.child("State"), "path"), on});
        if (t.devices.back().name.empty()) t.devices.back().name = word(d, "name");
    }
}

void Reader::readBands(Node equaliser, bool on, DawTrack& t) {
    constexpr size_t mostBands = 64;
    for (const Node b : equaliser.children("Band")) {
        if (t.bands.size() == mostBands) return;
        const auto enabled = b.child("Enabled").attribute("value");
        t.bands.push_back({word(b, "type"), number(b.child("Freq"), "value", 1000.0, 1.0, 1e6),
                           number(b.child("Gain"), "value", 0.0, -1000.0, 1000.0),
                           number(b.child("Q"), "value", 1.0, 0.0, 1000.0),
                           on && (!enabled || enabled.as_bool())});
    }
}

void Reader::readChannel(Node channel, DawTrack& t) {
    t.hasChannel = true;
    t.channelId = word(channel, "id");
    t.destination = word(channel, "destination");
    if (channel.attribute("role")) t.role = word(channel, "role");
    t.solo = channel.attribute("solo").as_bool();
    const Node volume = channel.child("Volume"), pan = channel.child("Pan"),
               mute = channel.child("Mute");
    if (volume) t.volume = gainOf(volume);
    t.volumeId = word(volume, "id");
    const double low = number(pan, "min", 0.0, -1000.0, 1000.0),
                 high = number(pan, "max", 1.0, -1000.0, 1000.0);
    if (pan && high > low)
        t.pan = std::clamp((number(pan, "value", (low + high) / 2, low, high) - low) / (high - low),
                           0.0, 1.0);
    t.panId = word(pan, "id");
    t.mute = mute.attribute("value").as_bool();
    t.muteId = word(mute, "id");
    for (const Node s : channel.child("Sends").children("Send")) {
        const Node level = s.child("Volume");
        t.sends.push_back({word(s, "destination"), word(level, "id"), level ? gainOf(level) : 0.0});
        if (word(s, "type") == "pre") lose("Sends before the fader: they come behind it");
    }
    readDevices(channel.child("Devices"), t);
}

void Reader::readTracks(Node parent, int folder, int depth) {
    for (const Node node : parent.children("Track")) {
        if (song.tracks.size() >= mostTracks || depth > deepestTrack)
            return lose("Tracks beyond the number that a song has room for");
        const int index = int(song.tracks.size());
        DawTrack& t = song.tracks.emplace_back();
        t.id = word(node, "id");
        t.name = word(node, "name");
        t.content = word(node, "contentType");
        t.colour = colourOf(node);
        t.parent = folder;
        t.isFolder = node.child("Track") || t.content.find("tracks") != std::string::npos;
        if (const Node channel = node.child("Channel")) readChannel(channel, t);
        trackById.try_emplace(t.id, index);
        readTracks(node, index, depth + 1);
    }
}

void Reader::readNotes(Node notes, const Frame& frame, DawClip& clip) const {
    for (const Node n : notes.children("Note")) {
        const double from = time(n, "time"), lasts = std::max(time(n, "duration"), 0.0);
        const double at = beats(frame, from);
        clip.notes.push_back(
            {at, beats(frame, from + lasts) - at, whole(n, "channel", 0, 0, channels - 1),
             whole(n, "key", 60, 0, keys - 1), number(n, "vel", 100.0 / 127.0, 0.0, 1.0)});
    }
}

bool Reader::readPoints(Node points, const Frame& outer, DawPoints& row) const {
    const Frame frame{unitOf(points, "timeUnit", outer.seconds), outer.base};
    const Node target = points.child("Target");
    row.parameter = word(target, "parameter");
    if (const DawExpression* expression = expressionOf(word(target, "expression")))
        row.target = expression->target;
    else if (!row.parameter.empty())
        row.target = DawTarget::parameter;
    row.channel = whole(target, "channel", 0, 0, channels - 1);
    row.number =
        whole(target, row.target == DawTarget::polyPressure ? "key" : "controller", 0, 0, keys - 1);
    const bool decibel = word(points, "unit") == "decibel";
    for (const Node p : points.children()) {
        const bool isSwitch = is(p, "BoolPoint");
        if (!isSwitch && !is(p, "RealPoint") && !is(p, "IntegerPoint")) continue;
        double value = isSwitch ? double(p.attribute("value").as_bool())
                                : number(p, "value", 0.0, -100000.0, 100000.0);
        if (decibel) value = std::pow(10.0, value / 20.0);
        const bool hold = !is(p, "RealPoint") || word(p, "interpolation") != "linear";
        row.points.push_back({beats(frame, time(p, "time")), value, hold});
    }
    std::ranges::stable_sort(row.points, {}, &DawPoint::time);
    return row.target != DawTarget::none;
}

/// At its own speed.
void Reader::readAudio(Node audio, double startSeconds, DawClip& clip) {
    DawAudio a;
    const Node file = audio.child("File");
    a.file = word(file, "path");
    a.external = file.attribute("external").as_bool();
    a.algorithm = word(audio, "algorithm");
    a.rate = whole(audio, "sampleRate", 44100, 1, 1000000);
    a.channels = whole(audio, "channels", 2, 1, 256);
    a.fileSeconds = std::max(time(audio, "duration"), 0.0);
    a.startSeconds = startSeconds;
    if (clip.audio.empty() && !a.file.empty()) clip.audio.push_back(a);
}

void Reader::readWarps(Node warps, const Content& content, DawClip& clip) {
    const bool seconds = unitOf(warps, "timeUnit", content.frame.seconds);
    const double unit = unitOf(warps, "contentTimeUnit", seconds) ? 1.0 : 60.0 / song.bpm;
    readAudio(warps.child("Audio"), content.seconds, clip);
    if (clip.audio.empty()) return;
    DawAudio& a = clip.audio.front();
    std::vector<DawWarp> pairs;
    for (const Node w : warps.children("Warp"))
        pairs.push_back({time(w, "time"), time(w, "contentTime") * unit});
    std::ranges::stable_sort(pairs, {}, &DawWarp::beat);
    if (pairs.size() < 2) return;
    if (!seconds) {
        a.warps = pairs;
        return;
    }
    const DawWarp first = pairs.front(), last = pairs.back();
    if (last.beat > first.beat)
        a.speed = (last.contentSeconds - first.contentSeconds) / (last.beat - first.beat);
    a.startSeconds = first.contentSeconds + (content.seconds - first.beat) * a.speed;
    if (pairs.size() > 2) lose("Warp markers that are placed in seconds: the speed is even");
}

void Reader::readContent(Node node, const Content& content, DawClip& clip, int depth) {
    for (const Node child : node.children()) {
        Content inner = content;
        inner.frame.seconds = unitOf(child, "timeUnit", content.frame.seconds);
        if (is(child, "Lanes") && depth < deepestLanes)
            readContent(child, inner, clip, depth + 1);
        else if (is(child, "Notes"))
            readNotes(child, inner.frame, clip);
        else if (is(child, "Audio"))
            readAudio(child, content.seconds, clip);
        else if (is(child, "Warps"))
            readWarps(child, content, clip);
        else if (is(child, "Clips") && depth < deepestClip) {
            for (const Node c : child.children("Clip"))
                readClip(c, inner.frame, clip.clips, depth + 1);
        } else if (is(child, "Points")) {
            DawPoints row;
            if (readPoints(child, content.frame, row)) clip.points.push_back(std::move(row));
        } else if (is(child, "Video"))
            lose("Video");
    }
}

void Reader::readClip(Node node, const Frame& frame, std::vector<DawClip>& into, int depth) {
    DawClip clip;
    clip.name = word(node, "name");
    clip.colour = colourOf(node);
    clip.enabled = node.attribute("enable").as_bool(true);
    const double from = time(node, "time"), lasts = std::max(time(node, "duration"), 0.0);
    clip.time = beats(frame, from);
    clip.duration = beats(frame, from + lasts) - clip.time;
    const double at = frame.base + clip.time, playStart = time(node, "playStart");
    const auto fade = [&](const char* name) {
        const double length = std::max(time(node, name), 0.0);
        if (unitOf(node, "fadeTimeUnit", frame.seconds)) return length;
        return clock.toSeconds(at + length) - clock.toSeconds(at);
    };
    clip.fadeInSeconds = fade("fadeInTime");
    clip.fadeOutSeconds = fade("fadeOutTime");
    const bool seconds = unitOf(node, "contentTimeUnit", frame.seconds);
    const double zero = seconds ? clock.toBeats(clock.toSeconds(at) - playStart) : at - playStart;
    const Content content{{seconds, zero},
                          seconds ? at - zero : playStart,
                          seconds ? playStart : clock.toSeconds(at) - clock.toSeconds(zero)};
    clip.playStart = content.beats;
    clip.loopStart = beats(content.frame, time(node, "loopStart"));
    clip.loopEnd = beats(content.frame, time(node, "loopEnd"));
    readContent(node, content, clip, depth);
    if (node.attribute("reference")) lose("Clips that refer to others: they come empty");
    into.push_back(std::move(clip));
}

void Reader::readLanes(Node node, Frame frame, int track, int depth) {
    if (depth > deepestLanes) return;
    frame.seconds = unitOf(node, "timeUnit", frame.seconds);
    track = trackOf(node, track);
    for (const Node child : node.children()) {
        DawTrack* t = track >= 0 ? &song.tracks[size_t(track)] : nullptr;
        if (is(child, "Lanes"))
            readLanes(child, frame, track, depth + 1);
        else if (is(child, "Clips")) {
            const int own = trackOf(child, track);
            const Frame inner{unitOf(child, "timeUnit", frame.seconds), 0.0};
            if (own < 0) continue;
            for (const Node c : child.children("Clip"))
                readClip(c, inner, song.tracks[size_t(own)].clips, 0);
        } else if (is(child, "Notes") && t) {
            DawClip all;
            readNotes(child, frame, all);
            for (const DawNote& n : all.notes)
                all.duration = std::max(all.duration, n.time + n.duration);
            t->clips.push_back(std::move(all));
        } else if (is(child, "Points") && t) {
            DawPoints row;
            if (readPoints(child, frame, row)) t->points.push_back(std::move(row));
        }
    }
}

void Reader::read() {
    song.application = word(root.child("Application"), "name");
    readTransport();
    readTempos();
    readTracks(root.child("Structure"), -1, 0);
    const Node arrangement = root.child("Arrangement");
    const bool seconds = unitOf(arrangement, "timeUnit", false);
    readLanes(arrangement, {seconds, 0.0}, -1, 0);
    for (const Node m : arrangement.child("Markers").children("Marker"))
        song.markers.push_back(
            {std::max(beats({seconds, 0.0}, time(m, "time")), 0.0), word(m, "name")});
    for (const Node s : arrangement.child("TimeSignatureAutomation").children("TimeSignaturePoint"))
        song.signatures.push_back({std::max(time(s, "time"), 0.0), whole(s, "numerator", 4, 1, 960),
                                   whole(s, "denominator", 4, 1, 960)});
    for (const Node slot : root.child("Scenes").children())
        if (slot.child("Lanes") || slot.child("ClipSlot")) lose("Scenes and their clips");
}

} // namespace

bool readDawProject(const std::string& xml, DawSong& song) {
    song = {};
    pugi::xml_document document;
    if (!document.load_buffer(xml.data(), xml.size())) return false;
    const Node root = document.child("Project");
    if (!root) return false;
    Reader(root, song).read();
    return true;
}
