#include "sequencer/song/Bars.h"

#include "base/Numbers.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"

#include <algorithm>
#include <climits>

namespace {

/// Bars of one signature.
struct Stretch {
    int from, to; ///< ticks
    int firstBar; ///< number of the bar that begins at `from`
    int beat;     ///< ticks
    int bar;
    int bars() const { return int((int64_t(to) - from + bar - 1) / bar); }
};

Stretch stretch(int from, int firstBar, int num, int den) {
    const int beat = asMax(1, quarterTicks * 4 / asMax(1, den));
    return {from, INT_MAX, firstBar, beat, beat * asMax(1, num)};
}

/// Calls `visit(stretch)`, in order, until it answers false.
template <class F>
void eachStretch(CSeq* seq, F&& visit) {
    int num = 4, den = 4;
    seq->getTimeSig(num, den);
    Stretch present = stretch(0, 1, num, den);
    if (const CSeqProg* prog = seq->getProg())
        for (const auto* point : prog->timesigs) {
            present.to = asMax(present.from, point->pos);
            const int next = present.firstBar + present.bars();
            if (present.to > present.from && !visit(present)) return;
            present = stretch(present.to, next, point->getNum(), point->getDen());
        }
    visit(present);
}

} // namespace

BarPlace barPlace(CSeq* seq, int tick) {
    BarPlace place;
    eachStretch(seq, [&](const Stretch& s) {
        const int into = tick - s.from;
        place = {s.firstBar + into / s.bar, into % s.bar / s.beat + 1, into % s.bar % s.beat};
        return tick >= s.to;
    });
    return place;
}

int tickOf(CSeq* seq, const BarPlace& place) {
    int64_t tick = 0;
    eachStretch(seq, [&](const Stretch& s) {
        tick = s.from + (int64_t(place.bar) - s.firstBar) * s.bar +
               (int64_t(place.beat) - 1) * s.beat + place.ticks;
        return place.bar >= s.firstBar + s.bars();
    });
    return limitTicks(tick);
}

void eachBar(CSeq* seq, int end, const std::function<void(int tick, int number)>& visit) {
    eachStretch(seq, [&](const Stretch& s) {
        int number = s.firstBar;
        for (int64_t tick = s.from; tick < std::min(s.to, end); tick += s.bar)
            visit(int(tick), number++);
        return s.to < end;
    });
}
