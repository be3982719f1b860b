#include "ui/PlaceText.h"

#include "base/Numbers.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CSeq.h"

#include <cstdlib>

CStr placeText(CSeq* seq, int tick) {
    const BarPlace at = barPlace(seq, asMax(0, tick));
    CStr text = CStr("bar ") + asStr(at.bar);
    if (at.beat > 1 || at.ticks > 0) text += CStr(".") + asStr(at.beat);
    if (at.ticks > 0) text += CStr(".") + asStr(at.ticks);
    return text;
}

/// By the song's signature.
CStr spanText(CSeq* seq, int ticks) {
    const int beat = 4 * quarterTicks / seq->options.den(), bar = seq->options.num() * beat;
    return asStr(ticks / bar) + "." + asStr(ticks % bar / beat) + "." + asStr(ticks % beat);
}

int spanOf(CSeq* seq, const CStr& text) {
    const int beat = 4 * quarterTicks / seq->options.den(), bar = seq->options.num() * beat;
    const char* at = text.asChar();
    double ticks = 0;
    for (const int unit : {bar, beat, 1}) {
        char* end = nullptr;
        const long count = std::strtol(at, &end, 10);
        if (end == at || count < 0) return 0;
        ticks += double(count) * unit;
        if (*end == 0) return ticks <= maxTicks ? asInt(ticks) : 0;
        if (*end != '.') return 0;
        at = end + 1;
    }
    return 0;
}

CStr deltaText(CSeq* seq, int ticks) {
    return CStr(ticks < 0 ? "-" : "+") + spanText(seq, std::abs(ticks));
}

CStr dragText(CSeq* seq, int from, int delta) {
    return placeText(seq, from + delta) + "   " + deltaText(seq, delta);
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
