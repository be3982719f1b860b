#include "sequencer/song/SongValues.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "engine/ObjectKinds.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/Scales.h"

namespace {

using Numbers = StoredValue::Numbers;

constexpr int mostSignature = 64, mostByte = 255;

CSeq* song(CObject* o) {
    return static_cast<CSeq*>(o);
}
const CSeq* song(const CObject* o) {
    return static_cast<const CSeq*>(o);
}
CSeqProg* program(CObject* o) {
    return static_cast<CSeqProg*>(o);
}
const CSeqProg* program(const CObject* o) {
    return static_cast<const CSeqProg*>(o);
}

/// Points and parts do not know the song that they are in.
CSeq* songOfHost() {
    return compAs<CSeq>(qv->firstOfType(compSeq));
}

unsigned char limitedByte(double v, int low, int high) {
    return static_cast<unsigned char>(asMinMax(asInt(v), low, high));
}

template <unsigned bit>
Numbers getBit(const CObject* o, int) {
    return {o->hasFlag(bit) ? 1.0 : 0.0};
}
template <unsigned bit>
void setBit(CObject* o, int, const Numbers& to) {
    o->setFlag(bit, to[0] != 0.0);
}
const StoredValue::Kind muted = {"Mute", getBit<songTrackMuted>, setBit<songTrackMuted>};
const StoredValue::Kind soloed = {"Solo", getBit<songTrackSoloed>, setBit<songTrackSoloed>};

const StoredValue::Kind loop = {
    "Loop",
    [](const CObject* o, int) {
        return Numbers{program(o)->seq->host->loop ? 1.0 : 0.0, program(o)->loop ? 1.0 : 0.0};
    },
    [](CObject* o, int, const Numbers& to) {
        program(o)->seq->host->loop = to[0] != 0.0;
        program(o)->loop = to[1] != 0.0;
    }};

const StoredValue::Kind locators = {
    "Locators",
    [](const CObject* o, int) {
        return Numbers{double(program(o)->leftLocator), double(program(o)->rightLocator)};
    },
    [](CObject* o, int, const Numbers& to) {
        program(o)->leftLocator = limitTicks(asInt64(to[0]));
        program(o)->rightLocator = limitTicks(asInt64(to[1]));
        program(o)->seq->songNotices.raise(SeqNotice::transport);
    }};

const StoredValue::Kind current = {
    "Program", [](const CObject* o, int) { return Numbers{double(song(o)->curProg)}; },
    [](CObject* o, int, const Numbers& to) { song(o)->setProg(asInt(to[0])); }};

const StoredValue::Kind signature = {
    "Time signature",
    [](const CObject* o, int) {
        return Numbers{double(song(o)->options.bytes[SongOptions::timeSigNum]),
                       double(song(o)->options.bytes[SongOptions::timeSigDen])};
    },
    [](CObject* o, int, const Numbers& to) {
        song(o)->options.bytes[SongOptions::timeSigNum] = limitedByte(to[0], 0, mostSignature);
        song(o)->options.bytes[SongOptions::timeSigDen] = limitedByte(to[1], 0, mostSignature);
        song(o)->songNotices.raise(SeqNotice::tracks);
    }};

const StoredValue::Kind pointSignature = {
    "Time signature",
    [](const CObject* o, int) {
        const auto* point = static_cast<const CTimesigPart*>(o);
        return Numbers{double(point->getNum()), double(point->getDen())};
    },
    [](CObject* o, int, const Numbers& to) {
        static_cast<CTimesigPart*>(o)->setTimesig(asInt(to[0]), asInt(to[1]));
        raiseSong(SeqNotice::tracks);
    }};

const StoredValue::Kind grid = {"Grid",
                                [](const CObject* o, int) {
                                    const CSnap& snap = *song(o)->snap;
                                    return Numbers{double(snap.asIndex()), snap.active ? 1.0 : 0.0,
                                                   snap.triplet ? 1.0 : 0.0,
                                                   snap.dotted ? 1.0 : 0.0};
                                },
                                [](CObject* o, int, const Numbers& to) {
                                    CSnap& snap = *song(o)->snap;
                                    snap.indexToSnap(asInt(to[0]));
                                    snap.active = to[1] != 0.0;
                                    snap.triplet = to[2] != 0.0;
                                    snap.dotted = to[3] != 0.0;
                                }};

const StoredValue::Kind pointTempo = {
    "Tempo",
    [](const CObject* o, int) { return Numbers{double(static_cast<const CTempoPart*>(o)->tempo)}; },
    [](CObject* o, int, const Numbers& to) {
        static_cast<CTempoPart*>(o)->setTempo(float(to[0]));
        if (CSeq* seq = songOfHost()) seq->tempo.changed();
    }};

const StoredValue::Kind ramp = {"Tempo ramp",
                                [](const CObject* o, int) {
                                    return Numbers{static_cast<const CTempoPart*>(o)->ramp ? 1.0
                                                                                           : 0.0};
                                },
                                [](CObject* o, int, const Numbers& to) {
                                    static_cast<CTempoPart*>(o)->ramp = to[0] != 0.0;
                                    if (CSeq* seq = songOfHost()) seq->tempo.changed();
                                }};

const StoredValue::Kind songTempo = {
    "Tempo", [](const CObject* o, int) { return Numbers{double(song(o)->host->songTempo)}; },
    [](CObject* o, int, const Numbers& to) {
        song(o)->host->setTempo(float(to[0]));
        song(o)->tempo.changed();
    }};

const StoredValue::Kind option = {
    "Option", [](const CObject* o, int i) { return Numbers{double(song(o)->options.bytes[i])}; },
    [](CObject* o, int i, const Numbers& to) {
        song(o)->options.bytes[i] = limitedByte(to[0], 0, mostByte);
        song(o)->songNotices.raise(SeqNotice::tracks);
    }};

const StoredValue::Kind punch = {
    "Punch", [](const CObject* o, int) { return Numbers{song(o)->punch ? 1.0 : 0.0}; },
    [](CObject* o, int, const Numbers& to) {
        song(o)->punch = to[0] != 0.0;
        song(o)->songNotices.raise(SeqNotice::transport);
    }};

const StoredValue::Kind preRoll = {
    "Pre-roll", [](const CObject* o, int) { return Numbers{double(song(o)->preRoll)}; },
    [](CObject* o, int, const Numbers& to) {
        song(o)->preRoll = asMinMax(asInt(to[0]), 0, CSeq::mostPreRoll);
        song(o)->songNotices.raise(SeqNotice::transport);
    }};

const StoredValue::Kind scale = {"Scale",
                                 [](const CObject* o, int index) {
                                     const SongScales::Change& c = song(o)->scales.changes[index];
                                     return Numbers{double(c.root), double(c.kind), double(c.tick)};
                                 },
                                 [](CObject* o, int index, const Numbers& to) {
                                     SongScales::Change& c = song(o)->scales.changes[index];
                                     c.root = asMinMax(asInt(to[0]), 0, octaveKeys - 1);
                                     c.kind = asMinMax(asInt(to[1]), 0, scaleCount - 1);
                                     if (index > 0)
                                         c.tick = to[2] < 0 ? SongScales::never
                                                            : limitTicks(asInt64(to[2]));
                                     song(o)->songNotices.raise(SeqNotice::parts);
                                 }};

} // namespace

void raiseSong(SeqNotice notice) {
    if (CSeq* seq = songOfHost()) seq->songNotices.raise(notice);
}

StoredValue mutedOf(CSongTrack* track) {
    return {&muted, track};
}

StoredValue soloedOf(CSongTrack* track) {
    return {&soloed, track};
}

StoredValue loopOf(CSeqProg* prog) {
    return {&loop, prog};
}

StoredValue locatorsOf(CSeqProg* prog) {
    return {&locators, prog};
}

StoredValue programOf(CSeq* seq) {
    return {&current, seq};
}

StoredValue signatureOf(CTimesigPart* point) {
    return {&pointSignature, point};
}

StoredValue signatureHereOf(CSeq* seq) {
    CTimesigPart* point = seq->tempo.signatureHere();
    return point ? StoredValue{&pointSignature, point} : StoredValue{&signature, seq};
}

StoredValue gridOf(CSeq* seq) {
    return {&grid, seq};
}

StoredValue tempoHereOf(CSeq* seq) {
    CTempoPart* point = seq->tempo.pointHere();
    return point ? tempoOf(point) : StoredValue{&songTempo, seq};
}

StoredValue tempoOf(CTempoPart* point) {
    return {&pointTempo, point};
}

StoredValue rampOf(CTempoPart* point) {
    return {&ramp, point};
}

StoredValue punchOf(CSeq* seq) {
    return {&punch, seq};
}

StoredValue preRollOf(CSeq* seq) {
    return {&preRoll, seq};
}

StoredValue scaleOf(CSeq* seq, int change) {
    return {&scale, seq, change};
}

StoredValue optionOf(CSeq* seq, SongOptions::Index index) {
    return {&option, seq, index};
}
