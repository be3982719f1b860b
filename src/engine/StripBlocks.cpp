#include "engine/StripBlocks.h"

#include "base/CStream.h"
#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "engine/COutputChannel.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int stripBytes = 52, eqBytes = 56, eq2Bytes = 72;
constexpr int intBytes = 4, floatBytes = 4;
constexpr int reservedInts = 7;

unsigned char asSection(int state) {
    return static_cast<unsigned char>(state);
}

/// The next float, or `usual` when it is none.
float readFinite(CStream* stream, float usual) {
    const float v = stream->readFloat();
    return std::isfinite(v) ? v : usual;
}

/// Small states are stored as signed bytes.
void readStates(CStream* stream, int (&states)[4]) {
    for (int& state : states) state = static_cast<signed char>(stream->readByte());
}

void writeStates(CStream* stream, const int (&states)[4]) {
    for (const int state : states) stream->writeByte(asSection(state));
}

void writeBand(CStream* stream, const CEQ* band) {
    stream->writeByte(band->active ? 1 : 0);
    stream->writeByte(static_cast<unsigned char>(band->filterType));
    stream->writeFloat(band->getFrequency());
    stream->writeFloat(band->getGain());
    stream->writeFloat(band->getQ());
}

void readBand(CStream* stream, COutputChannel* ch, int k) {
    const CEQ* band = ch->eq[k];
    ch->setEqPower(k, stream->readByte() != 0);
    ch->setEqType(k, std::clamp(stream->readByte(), int(eqLowShelf), int(eqNotch)));
    ch->setEqFrequency(k, readFinite(stream, band->getFrequency()));
    ch->setEqGain(k, readFinite(stream, band->getGain()));
    ch->setEqQ(k, readFinite(stream, band->getQ()));
}

} // namespace

void writeStrip(CStream* stream, const COutputChannel* ch) {
    stream->writeId("strip2", stripBytes);
    for (const float v : {ch->vol.load(), ch->pan.load(), ch->trim.load(), ch->trimAux.load()})
        stream->writeFloat(v);
    for (const unsigned char on :
         {ch->solo.load(), ch->mute.load(), ch->showFader.load(), ch->showExtra.load()})
        stream->writeByte(on);
    writeStates(stream, ch->sections);
    for (int i = 0; i < reservedInts; ++i) stream->writeInt(0);
}

void readOldStrip(CStream* stream, COutputChannel* ch) {
    ch->vol = fLimit(readFinite(stream, 1.0f), 0.0f, 1.0f);
    ch->pan = fLimit(readFinite(stream, 0.0f), -1.0f, 1.0f);
    ch->trim = fLimit(readFinite(stream, 0.0f), -1.0f, 1.0f);
    ch->trimAux = readFinite(stream, 1.0f);
    ch->solo = stream->readByte() ? 1 : 0;
    ch->mute = stream->readByte() ? 1 : 0;
    ch->setVol(ch->vol, false);
    ch->setPan(ch->pan, false);
}

void readStrip(CStream* stream, COutputChannel* ch) {
    readOldStrip(stream, ch);
    ch->showFader = stream->readByte() ? 1 : 0;
    ch->showExtra = stream->readByte() ? 1 : 0;
    readStates(stream, ch->sections);
    const auto unset = [](int state) { return state == 0; };
    if (std::all_of(std::begin(ch->sections), std::end(ch->sections), unset))
        std::fill(std::begin(ch->sections), std::end(ch->sections), -1);
    for (int i = 0; i < reservedInts; ++i) stream->readInt();
}

void writeEq(CStream* stream, const COutputChannel* ch, const char* id) {
    stream->writeId(id, eqBytes);
    for (const CEQ* band : ch->eq) writeBand(stream, band);
}

void writeEq2(CStream* stream, const COutputChannel* ch, const char* id) {
    stream->writeId(id, eq2Bytes);
    for (const CEQ* band : ch->eq) {
        writeBand(stream, band);
        writeStates(stream, band->state);
    }
}

void readEq(CStream* stream, COutputChannel* ch) {
    for (int k = 0; k < eqBandCount; ++k) readBand(stream, ch, k);
}

void readEq2(CStream* stream, COutputChannel* ch) {
    for (int k = 0; k < eqBandCount; ++k) {
        readBand(stream, ch, k);
        readStates(stream, ch->eq[k]->state);
    }
}

void writeSends(CStream* stream, const COutputChannel* ch, int buses, const char* id) {
    buses = std::clamp(buses, 0, maxSends);
    stream->writeId(id, intBytes + buses * floatBytes);
    stream->writeInt(buses);
    for (int i = 0; i < buses; ++i) stream->writeFloat(ch->sendLevels[i]->level);
}

void readSends(CStream* stream, COutputChannel* ch, int end) {
    const int count = stream->readInt();
    for (int i = 0; i < std::min(count, maxSends); ++i)
        ch->sendLevels[i]->level = fLimit(readFinite(stream, 0.0f), 0.0f, 1.0f);
    if (count > maxSends) stream->seek(end, seekStart);
}
