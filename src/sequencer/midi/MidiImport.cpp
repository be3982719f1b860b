#include "sequencer/midi/MidiImport.h"

#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CUndo.h"
#include "engine/MidiBytes.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/Points.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr int maxMetaText = 4096;
constexpr int maxDenPower = 7;
constexpr int varLenBytes = 4;
constexpr int midiChannels = 16, drumChannel = 9;
constexpr const char* importTitle = "Import";

enum Meta : int {
    metaName = 0x03,
    metaChannel = 0x20,
    metaEnd = 0x2F,
    metaTempo = 0x51,
    metaTimesig = 0x58,
};

int32_t chunkId(const char (&text)[5]) {
    return int32_t(uint8_t(text[0]) | uint8_t(text[1]) << 8 | uint8_t(text[2]) << 16 |
                   uint32_t(uint8_t(text[3])) << 24);
}

CStr idText(int32_t id) {
    CStr text;
    for (int shift = 0; shift < 32; shift += 8) {
        const char c = char((uint32_t(id) >> shift) & 0xFF);
        if (c) text.append(CStr(c));
    }
    return text;
}

/// The import of one file.
class Importer {
public:
    Importer(CSeq* s, CSongTrack* target, const CStr& name, CUndo* step, int at, const MidiWay& how)
        : seq(s), prog(s->getProg()), undo(step), position(at),
          splits(how.tracks == MidiTracks::byChannel), withPoints(how.withPoints),
          nextIndex(how.index), stream(name, 0),
          songTrack(target && (how.ontoParts || target->parts.empty()) ? target : nullptr) {
        if (songTrack) usedTracks.push_back(songTrack);
        if (songTrack) channelTold.push_back(songTrack->track);
        lastTempo = prog->tempos.last();
        lastTimesig = prog->timesigs.last();
    }
    MidiImport run();

private:
    enum class Step { next, endOfTrack, bad };

    // Bytes. A read beyond the chunk gives 0 and sets `ranOut`.
    int byte();
    int bigEndian(int bytes);
    int readVarLen();
    void skip(int bytes);

    bool readHeader();
    bool readTrack(int64_t end);
    Step readEvent();
    Step readMeta();
    void readName(int length);
    void readTempo();
    void readTimesig();
    void readChannelEvent(int status, int first);

    void needTrack();
    void setChannel(int channel);
    void needPart();
    void addNote(int data);
    void setNoteOff(int status, int note);
    void linkPart();
    bool mustSplit() const;
    void linkByChannel();
    void linkPoints();
    void dropPoints();
    void assignChannels();
    /// All that follows has to share the last track and part.
    bool full() { return filled = filled || !seq->hasTrackRoom(trackMIDI, undo); }

    struct Pending {
        CMIDIEvent* event;
        int tick;
    };
    struct PartChannel {
        CTrack* track;
        int channel; ///< -1 none yet, -2 several
    };

    CSeq* seq;
    CSeqProg* prog;
    CUndo* undo;
    int position;
    const bool splits; ///< a track of several channels
    const bool withPoints;
    int nextIndex; ///< of the next new track, -1 at the end
    CFileStream stream;
    int64_t chunkEnd = 0;
    bool ranOut = false;
    int tracksTold = 0, tracksRead = 0;
    int division = 960;
    int tick = 0;
    int64_t carried = 0; ///< delta of skipped system events
    int running = 0;
    bool filled = false;  ///< the song takes no more tracks
    bool crowded = false; ///< chunks had to share one
    int prefix = -1;      ///< channel told before there was a track, -1 none
    CStr trackName;       ///< told for `songTrack`, empty without

    CSongTrack* songTrack; ///< that the present chunk goes to
    CMIDIPart* part =
        nullptr; ///< linked when its chunk ends, the last that has room at the very end
    EventCollector events;
    std::map<int, std::deque<Pending>> pending; ///< by status and note
    std::vector<CSongTrack*> usedTracks;
    std::vector<PartChannel> channels;
    std::vector<CTrack*> channelTold; ///< by the user or the file, whatever their events are on
    std::vector<CTempoPart*> tempos;  ///< read, and not yet linked
    std::vector<CTimesigPart*> timesigs;
    CTempoPart* lastTempo;
    CTimesigPart* lastTimesig;
};

int Importer::byte() {
    if (stream.getPos() >= chunkEnd) {
        ranOut = true;
        return 0;
    }
    return stream.readByte();
}

int Importer::bigEndian(int bytes) {
    uint32_t value = 0;
    for (int i = 0; i < bytes; i++) value = value << 8 | uint32_t(byte());
    return int(value);
}

int Importer::readVarLen() {
    int value = 0;
    for (int i = 0; i < varLenBytes; i++) {
        const int b = byte();
        value = value << 7 | (b & 0x7F);
        if (b < 0x80) break;
    }
    return value;
}

void Importer::skip(int bytes) {
    const int64_t to = stream.getPos() + bytes;
    if (to > chunkEnd) ranOut = true;
    stream.seek(std::min(to, chunkEnd), seekStart);
}

bool Importer::readHeader() {
    const int32_t id = stream.readInt();
    if (id != chunkId("MThd")) {
        showMsg(nullptr, importTitle, CStr("Not a MIDI file ") + idText(id));
        return false;
    }
    chunkEnd = stream.getSize();
    bigEndian(4);
    bigEndian(2);
    tracksTold = bigEndian(2);
    division = short(bigEndian(2));
    if (division < 1) division = quarterTicks;
    return true;
}

void Importer::needTrack() {
    if (songTrack) return;
    songTrack = seq->addTrack(trackMIDI, prog, undo, nextIndex);
    if (nextIndex >= 0) nextIndex++;
    usedTracks.push_back(songTrack);
    if (prefix >= 0) setChannel(prefix);
    prefix = -1;
}

/// Ours and many others name the channel in front of what makes the track.
void Importer::setChannel(int channel) {
    if (!songTrack) {
        prefix = channel;
        return;
    }
    songTrack->track->channel = short(channel);
    channelTold.push_back(songTrack->track);
}

void Importer::needPart() {
    if (part) return;
    needTrack();
    part = new CMIDIPart;
    part->id = songTrack->track->id;
    part->pos = position;
    part->setSelected(true);
    channels.push_back({songTrack->track, -1});
}

void Importer::addNote(int data) {
    CMIDIEvent* note = createMIDIEvent();
    note->data = data;
    note->length = -1;
    events.add(tick, note);
    pending[data & 0x7FFF].push_back({note, tick});
}

void Importer::setNoteOff(int status, int note) {
    const auto found = pending.find(asData(status, note, 0));
    if (found == pending.end() || found->second.empty()) return;
    const Pending first = found->second.front();
    first.event->length = tick - first.tick;
    found->second.pop_front();
}

void Importer::readChannelEvent(int status, int first) {
    const int kind = statusByte(status);
    const bool single = kind == midiProgram || kind == midiPressure;
    const int data = asData(status, first & 0x7F, single ? 0 : byte() & 0x7F);
    if (ranOut) return;
    needPart();
    int& channel = channels.back().channel;
    channel = channel == -1 || channel == chByte(status) ? chByte(status) : -2;
    if (noteOn(data)) return addNote(data);
    if (noteOff(data)) return setNoteOff(midiNoteOn + chByte(status), asByte1(data));
    CMIDIEvent* event = createMIDIEvent();
    event->data = data;
    event->flags |= eventSelected;
    events.add(tick, event);
}

void Importer::readName(int length) {
    std::string text;
    for (int i = 0; i < length && !ranOut; i++) {
        const int c = byte();
        if (c && i < maxMetaText) text.push_back(char(c));
    }
    if (ranOut) return;
    needTrack();
    trackName = text.c_str();
    songTrack->track->id = trackName;
    if (part) part->id = text.c_str();
}

void Importer::readTempo() {
    const int value = bigEndian(3) & 0xFFFFFF;
    if (ranOut || value == 0) return;
    constexpr double microsecondsPerMinute = 60e6;
    auto* point = new CTempoPart;
    point->pos = limitTicks(int64_t(position) + tick);
    point->setTempo(float(asRound(microsecondsPerMinute / value)));
    if (lastTempo && lastTempo->pos == point->pos && lastTempo->getTempo() == point->getTempo()) {
        delete point;
        return;
    }
    tempos.push_back(point);
    lastTempo = point;
}

void Importer::readTimesig() {
    const int num = byte();
    const int power = byte();
    if (ranOut) return;
    auto* point = new CTimesigPart;
    point->pos = limitTicks(int64_t(position) + tick);
    point->setTimesig(num, power > maxDenPower ? 4 : 1 << power);
    if (lastTimesig && lastTimesig->pos == point->pos && lastTimesig->getNum() == point->getNum() &&
        lastTimesig->getDen() == point->getDen()) {
        delete point;
        return;
    }
    timesigs.push_back(point);
    lastTimesig = point;
}

Importer::Step Importer::readMeta() {
    const int type = byte();
    const int length = readVarLen();
    if (type == metaEnd && !ranOut) return Step::endOfTrack;
    const int64_t end = stream.getPos() + length;
    if (type == metaName) readName(length);
    if (type == metaTempo && length >= 3) readTempo();
    if (type == metaTimesig && length >= 2) readTimesig();
    if (type == metaChannel && length >= 1) {
        const int channel = byte();
        if (channel < 16 && !ranOut) setChannel(channel);
    }
    skip(int(end - stream.getPos()));
    return Step::next;
}

Importer::Step Importer::readEvent() {
    const int64_t delta = int64_t(readVarLen()) * 64 * 15 / division + carried;
    tick = int(std::min<int64_t>(int64_t(tick) + delta, maxTicks));
    carried = 0;
    const int status = byte();
    if (ranOut) return Step::next;
    if (status < 0x80) {
        if (!running) return Step::bad;
        readChannelEvent(running, status);
    } else if (status < 0xF0) {
        running = status;
        readChannelEvent(status, byte());
    } else if (status == 0xFF) {
        return readMeta();
    } else if (status == 0xF0) {
        skip(readVarLen());
    } else if (status <= 0xF7) {
        carried = delta;
        tick -= int(std::min<int64_t>(delta, tick));
        skip(readVarLen());
    } else {
        return Step::bad;
    }
    return Step::next;
}

/// Links the open part; the next one then goes to a new track.
void Importer::linkPart() {
    if (!part) return;
    if (mustSplit()) return linkByChannel();
    part->setEvents(events.takeList());
    songTrack->addPart(part, undo);
    part = nullptr;
    songTrack = nullptr;
    trackName = "";
}

bool Importer::mustSplit() const {
    const bool told = std::ranges::find(channelTold, songTrack->track) != channelTold.end();
    return splits && channels.back().channel == -2 && !told &&
           seq->hasTrackRoom(trackMIDI, undo, midiChannels);
}

/// The first channel keeps the track, each other one gets a track with a part as long.
void Importer::linkByChannel() {
    std::map<int, EventCollector> byChannel;
    int at = 0;
    for (CBaseEvent *e = events.takeList(), *next = nullptr; e; e = next) {
        next = e->next;
        at += e->delta;
        byChannel[chByte(asMessage(e)->data)].add(at, e);
    }
    const CStr name = trackName;
    const int length = part->length;
    for (auto& [channel, own] : byChannel) {
        needPart();
        if (channel == drumChannel)
            songTrack->track->id = "Drums";
        else if (!name.empty())
            songTrack->track->id = name + " " + asStr(channel + 1);
        part->id = songTrack->track->id;
        part->length = length;
        channels.back().channel = channel;
        part->setEvents(own.takeList());
        songTrack->addPart(part, undo);
        part = nullptr;
        songTrack = nullptr;
    }
    trackName = "";
}

/// Points join their list at its end: the step puts them in order, and of two at one tick the later
/// one in the file has to stay behind. They come last, since a track looks through all that the
/// step holds already.
void Importer::linkPoints() {
    if (!withPoints) return dropPoints();
    for (CTempoPart* point : tempos) undo->asAdd(point, &prog->tempos);
    for (CTimesigPart* point : timesigs) undo->asAdd(point, &prog->timesigs);
}

void Importer::dropPoints() {
    for (const CTempoPart* point : tempos) delete point;
    for (const CTimesigPart* point : timesigs) delete point;
}

bool Importer::readTrack(int64_t end) {
    chunkEnd = end;
    ranOut = false;
    tick = 0;
    carried = 0;
    running = 0;
    prefix = -1;
    crowded = crowded || part;
    Step step = Step::next;
    while (step == Step::next && !ranOut && stream.getPos() < end) {
        step = readEvent();
        if (part && step == Step::next && !ranOut) {
            const int64_t rounded =
                (int64_t(tick) + quarterTicks - 1) / quarterTicks * quarterTicks;
            part->length =
                int(std::max<int64_t>(part->length, std::min<int64_t>(rounded, maxTicks)));
        }
    }
    pending.clear();
    if (!full()) linkPart();
    if (step == Step::bad) showMsg(nullptr, importTitle, "Invalid file format (3)");
    if (step == Step::endOfTrack) tracksRead++;
    return step != Step::bad;
}

/// A track whose events are on several channels leaves them there, unless it was told its own.
void Importer::assignChannels() {
    if (usedTracks.size() < 2 && !splits) return;
    std::map<CTrack*, int> common;
    for (const PartChannel& c : channels) {
        const auto [entry, added] = common.try_emplace(c.track, c.channel);
        if (!added && entry->second != c.channel) entry->second = -2;
    }
    for (const auto& [track, channel] : common) {
        const bool told = std::ranges::find(channelTold, track) != channelTold.end();
        if (channel >= 0)
            track->channel = short(channel);
        else if (channel == -2 && !told)
            track->channel = -1;
    }
}

MidiImport Importer::run() {
    if (!stream.isOpen()) return MidiImport::unreadable;
    if (!songTrack && full()) {
        showMsg(nullptr, "Error", "Too many tracks");
        return MidiImport::good;
    }
    if (!readHeader()) return MidiImport::notMidi;
    bool good = true;
    bool cut = ranOut;
    const int64_t fileEnd = stream.getSize();
    constexpr int chunkHead = 8;
    while (good && stream.left() >= chunkHead) {
        const int32_t id = stream.readInt();
        const auto length = uint32_t(stream.readIntSwap());
        const int64_t toldEnd = stream.getPos() + int64_t(length);
        const int64_t end = std::min(toldEnd, fileEnd);
        cut = cut || toldEnd > fileEnd;
        if (id == chunkId("MTrk")) good = readTrack(end);
        stream.seek(end, seekStart);
    }
    linkPart();
    linkPoints();
    assignChannels();
    if (crowded) showMsg(nullptr, "Error", "Too many tracks");
    if (!good) return MidiImport::broken;
    return cut || tracksRead < tracksTold ? MidiImport::truncated : MidiImport::good;
}

} // namespace

MidiImport openMIDIFile(CSeq* seq, CSongTrack* target, const CStr& name, CUndo* undo, int position,
                        const MidiWay& way) {
    if (!seq->getProg()) return MidiImport::unreadable;
    return Importer(seq, target, name, undo, asMinMax(position, 0, maxTicks), way).run();
}
