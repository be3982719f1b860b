#include "ui/PlaceText.h"

#include "base/Numbers.h"
#include "sequencer/Bars.h"
#include "sequencer/CSeq.h"

#include <cstdlib>

CStr placeText(CSeq* seq, int tick) {
    const BarPlace at = barPlace(seq, asMax(0, tick));
    CStr text = CStr("bar ") + asStr(at.bar);
    if (at.beat > 1 || at.ticks > 0) text += CStr(".") + asStr(at.beat);
    if (at.ticks > 0) text += CStr(".") + asStr(at.ticks);
    return text;
}

/// By the song's signature.
CStr deltaText(CSeq* seq, int ticks) {
    const int num = seq->options.num(), beat = 4 * quarterTicks / seq->options.den();
    const int way = std::abs(ticks), bar = num * beat;
    return CStr(ticks < 0 ? "-" : "+") + asStr(way / bar) + "." + asStr(way % bar / beat) + "." +
           asStr(way % beat);
}

CStr lengthText(CSeq* seq, int ticks) {
    const int beat = 4 * quarterTicks / seq->options.den(), bar = seq->options.num() * beat;
    const auto count = [](int n, const char* what) {
        return asStr(n) + " " + what + (n == 1 ? "" : "s");
    };
    if (ticks % bar == 0) return count(ticks / bar, "bar");
    if (ticks % beat == 0) return count(ticks / beat, "beat");
    return count(ticks, "tick");
}
