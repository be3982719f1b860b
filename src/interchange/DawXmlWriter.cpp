#include "interchange/DawClock.h"
#include "interchange/DawTables.h"
#include "interchange/DawXml.h"

#include <charconv>
#include <cstdio>
#include <pugixml.hpp>
#include <sstream>

namespace {

using Node = pugi::xml_node;

constexpr const char* version = "1.0";

/// As few digits as read back as the same number, whatever the locale.
void put(Node node, const char* name, double value) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text - 1, value).ptr;
    *end = 0;
    node.append_attribute(name) = text;
}
void put(Node node, const char* name, const std::string& value) {
    node.append_attribute(name) = value.c_str();
}
void putName(Node node, const std::string& name) {
    if (!name.empty()) put(node, "name", name);
}
void putColour(Node node, int colour) {
    char text[16];
    std::snprintf(text, sizeof text, "#%06x", unsigned(colour) & 0xffffff);
    if (colour >= 0) put(node, "color", std::string(text));
}

/// Writes one song.
class Writer {
public:
    explicit Writer(const DawSong& of) : song(of), clock(clockOf(of)) {}
    std::string write();

private:
    void writeTransport(Node root);
    void writeTrack(Node parent, size_t index);
    void writeChannel(Node track, const DawTrack& t);
    void writeDevices(Node devices, const DawTrack& t);
    Node writeDevice(Node devices, const DawDevice& d);
    void writeBand(Node equaliser, const DawBand& b);
    void writeArrangement(Node root);
    void writeClip(Node clips, const DawClip& clip, double base);
    void writeContent(Node node, const DawClip& clip, double at);
    void writeAudio(Node clip, const DawClip& of, double at);
    void writePoints(Node parent, const DawPoints& row);
    static void writeNotes(Node parent, const DawClip& clip);
    std::string newId() { return "x" + std::to_string(ids++); }

    const DawSong& song;
    const BeatClock clock;
    int ids = 0;
};

std::string Writer::write() {
    pugi::xml_document document;
    Node root = document.append_child("Project");
    put(root, "version", version);
    Node application = root.append_child("Application");
    put(application, "name", song.application);
    put(application, "version", version);
    writeTransport(root);
    Node structure = root.append_child("Structure");
    for (size_t i = 0; i < song.tracks.size(); i++)
        if (song.tracks[i].parent < 0) writeTrack(structure, i);
    writeArrangement(root);
    root.append_child("Scenes");
    std::ostringstream text;
    document.save(text, "\t", pugi::format_default, pugi::encoding_utf8);
    return text.str();
}

void Writer::writeTransport(Node root) {
    Node transport = root.append_child("Transport"), tempo = transport.append_child("Tempo");
    put(tempo, "unit", "bpm");
    put(tempo, "value", song.bpm);
    put(tempo, "id", "tempo");
    put(tempo, "name", "Tempo");
    Node signature = transport.append_child("TimeSignature");
    signature.append_attribute("denominator") = song.den;
    signature.append_attribute("numerator") = song.num;
    put(signature, "id", "signature");
}

void Writer::writeTrack(Node parent, size_t index) {
    const DawTrack& t = song.tracks[index];
    Node track = parent.append_child("Track");
    put(track, "contentType", t.content);
    track.append_attribute("loaded") = true;
    put(track, "id", t.id);
    putName(track, t.name);
    putColour(track, t.colour);
    if (t.hasChannel) writeChannel(track, t);
    for (size_t i = index + 1; i < song.tracks.size(); i++)
        if (song.tracks[i].parent == int(index)) writeTrack(track, i);
}

Node Writer::writeDevice(Node devices, const DawDevice& d) {
    Node device = devices.append_child(d.element.c_str());
    put(device, "deviceID", d.id);
    put(device, "deviceName", d.name);
    put(device, "deviceRole", d.role);
    device.append_attribute("loaded") = true;
    put(device, "id", newId());
    putName(device, d.name);
    device.append_child("Parameters");
    Node enabled = device.append_child("Enabled");
    enabled.append_attribute("value") = d.on;
    put(enabled, "id", newId());
    if (!d.state.empty()) put(device.append_child("State"), "path", d.state);
    return device;
}

void Writer::writeBand(Node equaliser, const DawBand& b) {
    Node band = equaliser.append_child("Band");
    put(band, "type", b.type);
    const auto real = [&](const char* name, const char* unit, double value) {
        Node node = band.append_child(name);
        put(node, "unit", unit);
        put(node, "value", value);
        put(node, "id", newId());
    };
    real("Freq", "hertz", b.hz);
    real("Gain", "decibel", b.gainDb);
    real("Q", "linear", b.q);
    Node enabled = band.append_child("Enabled");
    enabled.append_attribute("value") = b.on;
    put(enabled, "id", newId());
}

/// The equaliser stands behind the instrument.
void Writer::writeDevices(Node devices, const DawTrack& t) {
    const auto write = [&](bool instrument) {
        for (const DawDevice& d : t.devices)
            if ((d.role == "instrument") == instrument) writeDevice(devices, d);
    };
    write(true);
    if (!t.bands.empty()) {
        const Node equaliser =
            writeDevice(devices, {"Equalizer", "Equaliser", "equaliser", "audioFX", "", true});
        for (const DawBand& b : t.bands) writeBand(equaliser, b);
    }
    write(false);
}

void Writer::writeChannel(Node track, const DawTrack& t) {
    Node channel = track.append_child("Channel");
    channel.append_attribute("audioChannels") = 2;
    if (!t.destination.empty()) put(channel, "destination", t.destination);
    put(channel, "role", t.role);
    channel.append_attribute("solo") = t.solo;
    put(channel, "id", t.channelId);
    if (!t.devices.empty() || !t.bands.empty()) writeDevices(channel.append_child("Devices"), t);
    const auto real = [](Node node, double value, const std::string& unit, const std::string& id,
                         const char* name) {
        put(node, "max", 1.0);
        put(node, "min", 0.0);
        put(node, "unit", unit);
        put(node, "value", value);
        put(node, "id", id);
        put(node, "name", name);
    };
    Node mute = channel.append_child("Mute");
    mute.append_attribute("value") = t.mute;
    put(mute, "id", t.muteId);
    put(mute, "name", "Mute");
    real(channel.append_child("Pan"), t.pan, "normalized", t.panId, "Pan");
    if (!t.sends.empty()) {
        Node sends = channel.append_child("Sends");
        for (const DawSend& s : t.sends) {
            Node send = sends.append_child("Send");
            put(send, "destination", s.destination);
            put(send, "type", "post");
            put(send, "id", newId());
            real(send.append_child("Volume"), s.level, "linear", s.levelId, "Send");
        }
    }
    real(channel.append_child("Volume"), t.volume, "linear", t.volumeId, "Volume");
}

void Writer::writePoints(Node parent, const DawPoints& row) {
    const DawExpression* expression = expressionOf(row.target);
    Node points = parent.append_child("Points"), target = points.append_child("Target");
    put(points, "unit", expression ? expression->unit : "linear");
    put(points, "id", newId());
    const bool isSwitch = row.target == DawTarget::parameter && row.number == 1;
    if (expression) {
        put(target, "expression", expression->word);
        const bool notes = row.target < DawTarget::gain;
        if (notes) target.append_attribute("channel") = row.channel;
        if (row.target == DawTarget::controller) target.append_attribute("controller") = row.number;
        if (row.target == DawTarget::polyPressure) target.append_attribute("key") = row.number;
    } else {
        put(target, "parameter", row.parameter);
    }
    for (const DawPoint& p : row.points) {
        Node point = points.append_child(isSwitch ? "BoolPoint" : "RealPoint");
        put(point, "time", p.time);
        if (isSwitch)
            point.append_attribute("value") = p.value >= 0.5;
        else
            put(point, "value", p.value);
        if (!isSwitch) put(point, "interpolation", p.hold ? "hold" : "linear");
    }
}

void Writer::writeNotes(Node parent, const DawClip& clip) {
    Node notes = parent.append_child("Notes");
    for (const DawNote& n : clip.notes) {
        Node note = notes.append_child("Note");
        put(note, "time", n.time);
        put(note, "duration", n.duration);
        note.append_attribute("channel") = n.channel;
        note.append_attribute("key") = n.key;
        put(note, "vel", n.velocity);
        put(note, "rel", n.velocity);
    }
}

void Writer::writeAudio(Node node, const DawClip& of, double at) {
    const DawAudio& a = of.audio.front();
    const bool plain = a.warps.empty() && a.speed == 1.0;
    Node parent = node;
    if (!plain) {
        parent = node.append_child("Warps");
        put(parent, "contentTimeUnit", "seconds");
        put(parent, "timeUnit", a.warps.empty() ? "seconds" : "beats");
    }
    Node audio = parent.append_child("Audio");
    if (!a.algorithm.empty()) put(audio, "algorithm", a.algorithm);
    audio.append_attribute("channels") = a.channels;
    put(audio, "duration", a.fileSeconds);
    audio.append_attribute("sampleRate") = a.rate;
    Node file = audio.append_child("File");
    put(file, "path", a.file);
    if (a.external) file.append_attribute("external") = true;
    const auto warp = [&](double time, double content) {
        Node w = parent.append_child("Warp");
        put(w, "time", time);
        put(w, "contentTime", content);
    };
    if (plain) return;
    for (const DawWarp& w : a.warps) warp(w.beat, w.contentSeconds);
    if (!a.warps.empty()) return;
    const double lasts = clock.toSeconds(at + of.duration) - clock.toSeconds(at);
    warp(0.0, a.startSeconds);
    warp(lasts, a.startSeconds + lasts * a.speed);
}

/// A clip has one child: a row of its own, or lanes for several.
void Writer::writeContent(Node node, const DawClip& clip, double at) {
    const bool several = !clip.points.empty();
    Node parent = several ? node.append_child("Lanes") : node;
    if (!clip.audio.empty())
        writeAudio(parent, clip, at);
    else if (!clip.clips.empty()) {
        Node inner = parent.append_child("Clips");
        for (const DawClip& c : clip.clips) writeClip(inner, c, at - clip.playStart);
    } else
        writeNotes(parent, clip);
    for (const DawPoints& row : clip.points) writePoints(parent, row);
}

void Writer::writeClip(Node clips, const DawClip& clip, double base) {
    Node node = clips.append_child("Clip");
    const bool seconds = !clip.audio.empty() && clip.audio.front().warps.empty();
    const bool plain = seconds && clip.audio.front().speed == 1.0;
    put(node, "time", clip.time);
    put(node, "duration", clip.duration);
    put(node, "contentTimeUnit", seconds ? "seconds" : "beats");
    put(node, "playStart", plain ? clip.audio.front().startSeconds : clip.playStart);
    if (clip.fadeInSeconds > 0 || clip.fadeOutSeconds > 0) {
        put(node, "fadeTimeUnit", "seconds");
        put(node, "fadeInTime", clip.fadeInSeconds);
        put(node, "fadeOutTime", clip.fadeOutSeconds);
    }
    if (!clip.enabled) node.append_attribute("enable") = false;
    putName(node, clip.name);
    putColour(node, clip.colour);
    writeContent(node, clip, base + clip.time);
}

void Writer::writeArrangement(Node root) {
    Node arrangement = root.append_child("Arrangement");
    put(arrangement, "id", newId());
    Node lanes = arrangement.append_child("Lanes");
    put(lanes, "timeUnit", "beats");
    put(lanes, "id", newId());
    for (const DawTrack& t : song.tracks) {
        Node lane = lanes.append_child("Lanes");
        put(lane, "track", t.id);
        put(lane, "id", newId());
        Node clips = lane.append_child("Clips");
        for (const DawClip& c : t.clips) writeClip(clips, c, 0.0);
        for (const DawPoints& row : t.points) writePoints(lane, row);
    }
    Node markers = arrangement.append_child("Markers");
    for (const DawMarker& m : song.markers) {
        Node marker = markers.append_child("Marker");
        put(marker, "time", m.time);
        putName(marker, m.name);
    }
    if (!song.tempos.empty()) {
        Node points = arrangement.append_child("TempoAutomation");
        put(points, "unit", "bpm");
        put(points, "timeUnit", "beats");
        put(points.append_child("Target"), "parameter", "tempo");
        for (const DawTempo& t : song.tempos) {
            Node point = points.append_child("RealPoint");
            put(point, "time", t.time);
            put(point, "value", t.bpm);
            put(point, "interpolation", t.ramp ? "linear" : "hold");
        }
    }
    if (song.signatures.empty()) return;
    Node points = arrangement.append_child("TimeSignatureAutomation");
    put(points, "timeUnit", "beats");
    put(points.append_child("Target"), "parameter", "signature");
    for (const DawSignature& s : song.signatures) {
        Node point = points.append_child("TimeSignaturePoint");
        put(point, "time", s.time);
        point.append_attribute("numerator") = s.num;
        point.append_attribute("denominator") = s.den;
    }
}

} // namespace

std::string writeDawProject(const DawSong& song) {
    return Writer(song).write();
}

std::string writeDawMetadata(const DawSong& song) {
    pugi::xml_document document;
    Node root = document.append_child("MetaData");
    root.append_child("Title").text() = song.title.c_str();
    std::ostringstream text;
    document.save(text, "\t", pugi::format_default, pugi::encoding_utf8);
    return text.str();
}
