#include "interchange/DawParts.h"

#include "audiofiles/CSample.h"
#include "engine/MidiBytes.h"
#include "interchange/DawUnits.h"
#include "sequencer/song/CPart.h"
#include "sequencer/song/CTrack.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr size_t mostEvents = 4'000'000; ///< that loops are written out to
constexpr double near = 1e-9;

CStr text(const std::string& s) {
    return s.c_str();
}

void setClip(CAudioEvent* event, const DawClip& clip) {
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

} // namespace

void addLine(std::vector<CStr>& lines, const CStr& line) {
    for (const CStr& known : lines)
        if (known == line) return;
    lines.push_back(line);
}

void listAudio(const std::vector<DawClip>& clips, std::map<std::string, bool>& names) {
    for (const DawClip& c : clips) {
        for (const DawAudio& a : c.audio) names.try_emplace(a.file, a.external);
        listAudio(c.clips, names);
    }
}

/// A piece of a clip: what stands in the content from `content` on sounds at `at`, both in quarter
/// notes, the latter from the clip's start.
struct DawParts::Piece {
    double at, content, length;
};

std::vector<DawParts::Piece> DawParts::piecesOf(const DawClip& clip) {
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

/// What a part of clips gets.
struct DawParts::Audio {
    EventCollector events;
    int chs = 0, count = 0;
};

bool DawParts::full() {
    if (eventCount++ < mostEvents) return false;
    addLine(lost, "Events beyond four million");
    return true;
}

void DawParts::addRow(EventCollector& events, const DawPoints& row, const Piece& piece) {
    for (const DawPoint& p : row.points) {
        if (p.time < piece.content - near || p.time > piece.content + piece.length) continue;
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
        if (full()) return;
        CMIDIEvent* event = createMIDIEvent();
        event->data = message;
        event->length = 0;
        events.add(toTicks(piece.at + p.time - piece.content), event);
    }
}

/// With `cuts` what is longer than its piece ends with it.
void DawParts::addNotes(EventCollector& events, const DawClip& clip, const Piece& piece, bool drums,
                        bool cuts) {
    for (const DawNote& n : clip.notes) {
        if (n.time < piece.content - near || n.time >= piece.content + piece.length) continue;
        if (full()) return;
        const double at = piece.at + n.time - piece.content;
        const double length =
            cuts ? std::min(n.duration, piece.content + piece.length - n.time) : n.duration;
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
}

/// Content that is not looped keeps what stands outside of the window; ticks of it count from the
/// content's own 0.
void DawParts::fillNotes(CPart* part, const DawClip& clip, bool drums) {
    EventCollector events;
    std::vector<Piece> pieces = piecesOf(clip);
    const bool looped = pieces.size() > 1;
    constexpr double far = 4e6;
    if (!looped) {
        part->offset = -toTicks(clip.playStart);
        pieces = {{-far, -far, 2 * far}};
    }
    for (const Piece& piece : pieces) {
        addNotes(events, clip, piece, drums, looped);
        for (const DawPoints& row : clip.points) {
            if (!drums) addRow(events, row, piece);
            if (row.target == DawTarget::parameter) addLine(lost, "Automation inside of clips");
        }
    }
    part->setEvents(events.takeList());
}

CPart* DawParts::make(const DawClip& clip, const CTrack* track) {
    CPart* part = nullptr;
    std::map<std::string, bool> names;
    listAudio({clip}, names);
    if (track->kind == trackAudio) {
        if (!names.empty()) part = makeAudio(clip);
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

/// Where in its source a clip without warps is at a place of its content, in seconds; `start` is
/// where the clip begins in the song.
double DawParts::sourceAt(const DawClip& clip, double start, double content) const {
    const DawAudio& a = clip.audio.front();
    const double passed =
        clock.toSeconds(start + content - clip.playStart) - clock.toSeconds(start);
    return a.startSeconds + passed * a.speed;
}

void DawParts::addEvent(Audio& to, const DawClip& clip, CSample* sample, const Piece& piece,
                        double fromSeconds, double toSeconds) {
    if (full()) return;
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
void DawParts::addAudio(Audio& to, const DawClip& clip, double start, Piece piece) {
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
void DawParts::addClips(Audio& to, const DawClip& clip, double start, const Piece& piece) {
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
CPart* DawParts::makeAudio(const DawClip& clip) {
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
