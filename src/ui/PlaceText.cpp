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

CStr keyName(int key) {
    constexpr int keys = 12;
    constexpr const char* names[keys] = {"C",  "C#", "D",  "D#", "E",  "F",
                                         "F#", "G",  "G#", "A",  "A#", "B"};
    return names[(key % keys + keys) % keys];
}

CStr noteToStr(int key) {
    return keyName(key) + asStr(key / 12 - 1);
}

int keyOf(const CStr& name) {
    constexpr int steps[] = {9, 11, 0, 2, 4, 5, 7}; // from A on
    const char* at = name.asChar();
    const int letter = (*at | 0x20) - 'a';
    if (letter < 0 || letter > 6) return -1;
    int key = steps[letter];
    at++;
    for (; *at == '#' || *at == 'b'; at++) key += *at == '#' ? 1 : -1;
    char* end = nullptr;
    const long octave = std::strtol(at, &end, 10);
    if (end == at || *end || octave < -1 || octave > 9) return -1;
    key += (int(octave) + 1) * 12;
    return key >= 0 && key < 128 ? key : -1;
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
