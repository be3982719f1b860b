#include "sequencer/edit/Remix.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/PartSplit.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace {

CStr freeName(const CSeq* seq) {
    std::set<int> taken;
    const CStr stem = "Remix ";
    for (const auto* prog : seq->programs()) {
        const int number = strAsInt(prog->id.sub(stem.length(), -1));
        if (prog->id == stem + asStr(number)) taken.insert(number);
    }
    int number = 1;
    while (taken.count(number)) number++;
    return stem + asStr(number);
}

/// A program in the making, of sections of another one.
class Remix {
public:
    Remix(CSeq* song, CSeqProg* from) : seq(song), source(from), made(song->createProgram()) {
        made->id = freeName(seq);
        made->loop = 0;
    }

    void add(const CMarkerPart* section) {
        const int from = section->pos, to = section->endTick();
        if (from >= to || at > maxTicks - (to - from)) return;
        int row = 0;
        for (auto* songTrack : source->tracks) {
            auto* target = made->tracks.items(row++);
            for (auto* part : songTrack->parts) addPart(target, part, from, to);
        }
        addTempos(from, to);
        addSignatures(from, to);
        at += to - from;
    }

    CSeqProg* finish() {
        made->rightLocator = at;
        made->reserveTempos(0);
        return made.release();
    }

private:
    CSeq* seq;
    CSeqProg* source;
    std::unique_ptr<CSeqProg> made;
    int at = 0; ///< ticks, where the next section begins
    float tempo = 0.0f;
    bool ramp = false;
    std::pair<int, int> signature{0, 0};

    void addPart(CSongTrack* target, CPart* part, int from, int to) {
        const int start = part->pos;
        const int end = limitTicks(int64_t(start) + seq->getTicks(part));
        const int first = std::max(from, start), last = std::min(to, end);
        if (first >= last) return;
        const int cut = first - start;
        std::unique_ptr<CPart> piece;
        if (part->type == partAudio) {
            piece = uncheckedPiece(seq, part, cut, last - start);
        } else {
            piece.reset(part->copy(0));
            piece->offset = part->offset - cut;
            piece->length = last - first;
        }
        piece->pos = at + first - from;
        piece->setSelected(false);
        target->linkPart(piece.release());
    }

    void addTempos(int from, int to) {
        if (source->tempos.empty()) return;
        const TempoMap& map = source->tempoMap();
        const auto bpmAt = [&](int tick) { return float(map.bpmAt(seq->host->songTempo, tick)); };
        const CTempoPart* before = map.lastAt(from);
        setTempo(bpmAt(from), before && before->ramp, at);
        for (auto* point : source->tempos)
            if (point->pos > from && point->pos < to)
                setTempo(point->getTempo(), point->ramp != 0, at + point->pos - from);
        if (ramp) setTempo(bpmAt(to), false, at + to - from);
    }

    /// What holds from a tick on, with `goesOn` in a line to the next one.
    void setTempo(float bpm, bool goesOn, int tick) {
        const bool same = std::exchange(tempo, bpm) == bpm;
        if (!std::exchange(ramp, goesOn) && !goesOn && same) return;
        auto* point = new CTempoPart;
        point->pos = tick;
        point->setTempo(bpm);
        point->ramp = goesOn;
        made->tempos.add(point);
    }

    void addSignatures(int from, int to) {
        if (source->timesigs.empty()) return;
        const CTimesigPart* before = source->timesigInForce(from);
        setSignature(before ? std::pair(before->getNum(), before->getDen())
                            : std::pair(seq->options.num(), seq->options.den()),
                     at);
        for (auto* point : source->timesigs)
            if (point->pos > from && point->pos < to)
                setSignature({point->getNum(), point->getDen()}, at + point->pos - from);
    }

    void setSignature(std::pair<int, int> to, int tick) {
        if (std::exchange(signature, to) == to) return;
        auto* point = new CTimesigPart(to.first, to.second);
        point->pos = tick;
        made->timesigs.add(point);
    }
};

std::vector<const CMarkerPart*> sectionsOf(CSeqProg* prog) {
    std::vector<const CMarkerPart*> sections;
    const int count = prog->session.count();
    for (int i = 0; i < count; i++)
        if (const CMarkerPart* marker = prog->session.at(i); prog->markers.contains(marker))
            sections.push_back(marker);
    return sections;
}

} // namespace

CStr remix(CSeq* seq, CSeqProg* prog) {
    const std::vector<const CMarkerPart*> sections = sectionsOf(prog);
    if (sections.empty()) return "The arranger has played nothing yet";
    Remix made(seq, prog);
    for (const CMarkerPart* section : sections) made.add(section);
    CUndo* undo = seq->host->undoStart(
        "Remix", seq, {.song = true, .seq = SeqNotice::parts, .comp = CompNotice::program});
    undo->asAdd(made.finish(), &seq->progs);
    undo->asGrow(seq, seq->curProg, seq->progs.getCount() - seq->curProg);
    seq->host->undoEnd(undo, false);
    return "";
}
