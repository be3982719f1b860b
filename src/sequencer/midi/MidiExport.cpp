#include "sequencer/midi/MidiExport.h"

#include "base/Numbers.h"
#include "base/SafeFile.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "sequencer/midi/CSMF.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/RowLoops.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <vector>

namespace {

constexpr int maxKey = 127;
constexpr float drumVelocities = 126.0f;

struct Range {
    int from, to; ///< ticks, without `to`
};

struct Message {
    int tick, data;
};

Range rangeOf(CSeq* seq, MidiRange wanted) {
    int left = 0, right = 0;
    seq->getLoopSection(left, right);
    if (wanted == MidiRange::loop && left < right) return {left, right};
    return {0, seq->renderDuration()};
}

/// What holds from a tick on.
template <class T>
struct Point {
    int tick;
    T what;
};

/// Calls `write(delta, what)` for the points of the range, and for that which its start lies
/// behind.
template <class T, class F>
void eachPoint(const std::vector<Point<T>>& points, const Range& range, F&& write) {
    int last = 0;
    const Point<T>* before = nullptr;
    const auto put = [&](const Point<T>& point) {
        const int tick = std::max(0, point.tick - range.from);
        write(tick - last, point.what);
        last = tick;
    };
    for (const Point<T>& point : points) {
        if (point.tick <= range.from) {
            before = &point;
            continue;
        }
        if (before) put(*before);
        before = nullptr;
        if (point.tick < range.to) put(point);
    }
    if (before) put(*before);
}

/// A line of tempo becomes one step per sixteenth, each as long as the sixteenth in the song.
void addLine(std::vector<Point<double>>& tempos, CSeq* seq, int from, int to) {
    constexpr int sixteenth = 240, clock = 1000000; // frames per second
    for (int tick = from, next; tick < to; tick = next) {
        next = std::min(tick + sixteenth, to);
        const double seconds = seq->ticksToFrames(tick, next - tick, clock) / clock;
        tempos.push_back({tick, (next - tick) / (seconds * ticksPerSecondPerBpm)});
    }
}

void writeTempos(CSMF& file, CSeq* seq, const Range& range) {
    const auto& points = seq->getProg()->tempos;
    if (points.empty()) return file.writeTempoTrack(asInt(double(seq->host->tempo)));
    std::vector<Point<double>> tempos;
    for (const auto* point : points) {
        const CTempoPart* next = seq->getNextTempoChange(point->pos);
        if (point->ramp && next)
            addLine(tempos, seq, point->pos, next->pos);
        else
            tempos.push_back({point->pos, double(asInt(double(point->getTempo())))});
    }
    file.writeStartOfTrack();
    eachPoint(tempos, range, [&](int delta, double bpm) { file.writeTempo(delta, bpm); });
    file.writeEndOfTrack();
}

void writeTimesigs(CSMF& file, CSeq* seq, const Range& range) {
    const auto& points = seq->getProg()->timesigs;
    if (points.empty()) {
        int num = 4, den = 4;
        seq->getTimeSig(num, den);
        return file.writeTimesigTrack(num, den);
    }
    std::vector<Point<const CTimesigPart*>> signatures;
    for (const auto* point : points) signatures.push_back({point->pos, point});
    file.writeStartOfTrack();
    eachPoint(signatures, range, [&](int delta, const CTimesigPart* point) {
        file.writeTimesig(delta, point->getNum(), point->getDen());
    });
    file.writeEndOfTrack();
}

/// What a track plays within a range, relative to its start.
class TrackMessages {
public:
    TrackMessages(CTrack* from, const Range& within) : track(from), range(within) {}

    void add(CPart* part);
    void write(CSMF& file);

private:
    void addNote(int tick, int message, int length, int end);
    void addStrike(int tick, int message, const CBaseEvent* event, int length, int end);
    void addDrum(int tick, const CDrumEvent* event, int end);
    void addMessage(int tick, const CMIDIEvent* event, int end);

    CTrack* track;
    Range range;
    std::vector<Message> starts, noteOffs;
};

/// A note at the end, where part or range is over, is not heard.
void TrackMessages::addNote(int tick, int message, int length, int end) {
    if (tick == end) return;
    const int off = int(std::min<int64_t>(int64_t(tick) + std::max(1, length), end));
    starts.push_back({tick - range.from, message});
    noteOffs.push_back({off - range.from, asData(message, asByte1(message), 0)});
}

/// A note and its repeats.
void TrackMessages::addStrike(int tick, int message, const CBaseEvent* event, int length, int end) {
    const int count = std::max(1, int(event->style.repeats));
    const auto start = [&](int i) { return int(int64_t(std::max(length, 1)) * i / count); };
    for (int i = 0; i < count && tick + start(i) <= end; i++)
        addNote(tick + start(i), message, start(i + 1) - start(i), end);
}

void TrackMessages::addDrum(int tick, const CDrumEvent* event, int end) {
    const int key = event->sound + firstDrumKey;
    if (key > maxKey) return;
    const int velocity = asInt(double(event->velocity * drumVelocities + 1.0f));
    addStrike(tick, track->setCh(asData(midiNoteOn, key, asMinMax(velocity, 1, 127))), event,
              event->length, end);
}

void TrackMessages::addMessage(int tick, const CMIDIEvent* event, int end) {
    if (noteOn(event->data))
        addStrike(tick, track->setCh(event->data), event, event->length, end);
    else
        starts.push_back({tick - range.from, event->data});
}

void TrackMessages::add(CPart* part) {
    const int partEnd = saturate(int64_t(part->pos) + track->seq->getTicks(part));
    const int end = std::min(partEnd, range.to);
    const PlayedEvents played(part, saturate(int64_t(end) - part->pos - part->offset));
    int64_t clock = int64_t(part->pos) + part->offset;
    for (const CBaseEvent* e = played.list(); e; e = e->next) {
        clock += e->delta;
        const int tick = saturate(clock);
        if (tick < std::max(int(part->pos), range.from) || tick > end) continue;
        if (e->style.chance == 0 || e->style.muted) continue;
        if (part->type == partDrum)
            addDrum(tick, asHit(e), end);
        else
            addMessage(tick, asMessage(e), end);
    }
}

/// The file puts the newest of one tick first: so messages keep their order by going in backward,
/// and note-offs, which come last, stand before the notes that begin at their tick.
void TrackMessages::write(CSMF& file) {
    const auto earlier = [](const Message& a, const Message& b) { return a.tick < b.tick; };
    std::stable_sort(starts.begin(), starts.end(), earlier);
    std::stable_sort(noteOffs.begin(), noteOffs.end(), earlier);
    for (auto m = starts.rbegin(); m != starts.rend(); ++m) file.addEvent(m->tick, m->data);
    for (const Message& m : noteOffs) file.addEvent(m.tick, m.data);
    file.writeTrack();
}

void writeSongTrack(CSMF& file, CSongTrack* songTrack, const Range& range) {
    CTrack* track = songTrack->track;
    TrackMessages messages(track, range);
    file.writeStartOfTrack();
    if (track->channel >= 0) file.writeMIDICh(track->channel);
    file.writeTrackName(track->id);
    for (CPart* part : songTrack->parts) messages.add(part);
    messages.write(file);
    file.writeEndOfTrack();
}

bool isExported(CSongTrack* songTrack, bool anySolo) {
    const int kind = songTrack->track->kind;
    if (kind != trackMIDI && kind != trackDrum) return false;
    return !songTrack->muted() && (!anySolo || songTrack->soloed());
}

void writeSong(CSMF& file, CSeq* seq, const Range& range) {
    CSeqProg* prog = seq->getProg();
    bool anySolo = false;
    for (const auto* t : prog->tracks) anySolo = anySolo || t->soloed();
    writeTempos(file, seq, range);
    writeTimesigs(file, seq, range);
    for (auto* t : prog->tracks)
        if (isExported(t, anySolo)) writeSongTrack(file, t, range);
}

} // namespace

MidiExport exportMIDIFile(CSeq* seq, const CStr& path, MidiRange range) {
    if (!seq->getProg()) return MidiExport::notCreated;
    SafeFile target(path);
    CSMF file(target.path());
    if (!file.isOpen()) return MidiExport::notCreated;
    writeSong(file, seq, rangeOf(seq, range));
    return file.close() && target.commit() ? MidiExport::good : MidiExport::noRoom;
}
