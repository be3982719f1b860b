#include "sequencer/midi/CSMF.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "sequencer/song/CPart.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>

namespace {

constexpr int headerLength = 6;
constexpr int format = 1;
constexpr int trackCountPos = 10;
constexpr int maxVarLen = (1 << 28) - 1;
constexpr int microsecondsPerMinute = 60000000;
constexpr int clocksPerClick = 24, thirtySecondsPerQuarter = 8;
constexpr unsigned char metaStatus = 0xFF;
constexpr int maxNum = 255;

enum Meta : int {
    metaName = 0x03,
    metaChannel = 0x20,
    metaEnd = 0x2F,
    metaTempo = 0x51,
    metaTimesig = 0x58,
};

unsigned char powerOf(int den) {
    constexpr unsigned char powerOfQuarter = 2;
    for (unsigned char power = 0; power <= 5; power++)
        if (den == 1 << power) return power;
    return powerOfQuarter;
}

bool hasTwoBytes(int status) {
    return statusByte(status) != midiProgram && statusByte(status) != midiPressure;
}

} // namespace

CSMF::CSMF(const CStr& path) : fp(std::fopen(path.asChar(), "wb")) {
    if (!fp) return;
    std::fputs("MThd", fp);
    put(headerLength, 4);
    put(format, 2);
    put(0, 2);
    put(quarterTicks, 2);
}

CSMF::~CSMF() {
    close();
    clearEvents();
}

bool CSMF::close() {
    if (!fp) return false;
    failed = failed || std::fseek(fp, trackCountPos, SEEK_SET) != 0;
    put(uint32_t(trackCount), 2);
    failed = failed || std::ferror(fp) != 0;
    if (std::fclose(fp) != 0) failed = true;
    fp = nullptr;
    return !failed;
}

void CSMF::put(uint32_t value, int bytes) {
    if (!fp) return;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        if (std::fputc(int(value >> shift & 0xFF), fp) == EOF) failed = true;
    trackBytes += bytes;
}

void CSMF::writeStartOfTrack() {
    if (!fp) return;
    std::fputs("MTrk", fp);
    trackLengthPos = std::ftell(fp);
    put(0, 4);
    runningStatus = 0;
    lastTick = 0;
    trackBytes = 0;
    clearEvents();
}

void CSMF::writeEndOfTrack() {
    if (!fp) return;
    writeMeta(0, metaEnd, 0);
    failed = failed || std::fseek(fp, trackLengthPos, SEEK_SET) != 0;
    put(uint32_t(trackBytes), 4);
    failed = failed || std::fseek(fp, 0, SEEK_END) != 0;
    trackCount++;
}

void CSMF::writeVarLen(int value) {
    value = asMinMax(value, 0, maxVarLen);
    for (int shift = 21; shift > 0; shift -= 7)
        if (value >> shift) put(uint32_t(value >> shift & 0x7F) | 0x80, 1);
    put(uint32_t(value & 0x7F), 1);
}

void CSMF::writeLong(int value) {
    put(uint32_t(value), 4);
}

void CSMF::write3(int value) {
    put(uint32_t(value), 3);
}

void CSMF::write2(short value) {
    put(uint32_t(value), 2);
}

void CSMF::writeByte(unsigned char value) {
    put(value, 1);
}

void CSMF::writeMeta(int delta, int kind, int length) {
    writeVarLen(delta);
    writeByte(metaStatus);
    writeByte(static_cast<unsigned char>(kind));
    writeVarLen(length);
}

void CSMF::writeTempo(int delta, double bpm) {
    writeMeta(delta, metaTempo, 3);
    write3(asInt(microsecondsPerMinute / std::max(bpm, 1.0)));
}

void CSMF::writeTempoTrack(int bpm) {
    writeStartOfTrack();
    writeTempo(0, bpm);
    writeEndOfTrack();
}

void CSMF::writeTimesig(int delta, int num, int den) {
    writeMeta(delta, metaTimesig, 4);
    writeByte(static_cast<unsigned char>(asMinMax(num, 1, maxNum)));
    writeByte(powerOf(den));
    writeByte(clocksPerClick);
    writeByte(thirtySecondsPerQuarter);
}

void CSMF::writeTimesigTrack(int num, int den) {
    writeStartOfTrack();
    writeTimesig(0, num, den);
    writeEndOfTrack();
}

void CSMF::writeTrackName(const CStr& name) {
    writeMeta(0, metaName, name.length());
    for (int i = 0; i < name.length(); i++) writeByte(static_cast<unsigned char>(name[i]));
}

void CSMF::writeMIDICh(int channel) {
    writeMeta(0, metaChannel, 1);
    writeByte(static_cast<unsigned char>(channel & 0x0F));
}

void CSMF::addEvent(int tick, int message) {
    CMIDIEvent* event = createMIDIEvent();
    event->delta = tick;
    event->data = message;
    CBaseEvent** link = lastLink && (*lastLink)->delta <= tick ? lastLink : &events;
    while (*link && (*link)->delta < tick) link = &(*link)->next;
    event->next = *link;
    *link = event;
    lastLink = link;
}

void CSMF::writeEvent(int message, int tick) {
    const int status = message & 0xFF;
    writeVarLen(tick - lastTick);
    lastTick = tick;
    if (status != runningStatus) writeByte(static_cast<unsigned char>(status));
    runningStatus = status;
    writeByte(static_cast<unsigned char>(asByte1(message) & 0x7F));
    if (hasTwoBytes(status)) writeByte(static_cast<unsigned char>(asByte2(message) & 0x7F));
}

void CSMF::writeTrack() {
    for (const CBaseEvent* e = events; e; e = e->next) writeEvent(asMessage(e)->data, e->delta);
}

void CSMF::clearEvents() {
    freeEvents(events);
    events = nullptr;
    lastLink = nullptr;
}
