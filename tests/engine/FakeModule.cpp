#include "engine/FakeModule.h"

#include <cstdio>
#include <cstring>

extern "C" {
FakeState fakeState;
intptr_t libaam(intptr_t op, intptr_t a, intptr_t b);
}

namespace {

void name(const char* kind, intptr_t i, intptr_t to) {
    auto* buffer = reinterpret_cast<char*>(to);
    if (fakeState.unterminated)
        std::memset(buffer, 'x', aamNameBytes);
    else
        std::snprintf(buffer, aamNameBytes, "%s %d", kind, int(i));
}

intptr_t frames(intptr_t asked) {
    if (asked) fakeState.askedFrames = asked;
    return fakeState.grantFrames ? fakeState.grantFrames : fakeState.askedFrames;
}

void rate(intptr_t asked, intptr_t to) {
    if (asked) fakeState.askedRate = asked;
    const float granted =
        fakeState.grantRate != 0.0f ? fakeState.grantRate : float(fakeState.askedRate);
    if (to) *reinterpret_cast<float*>(to) = granted;
}

/// The four groups of operations on channels and ports, alike but for their base.
intptr_t channels(intptr_t op, intptr_t a, intptr_t b) {
    constexpr intptr_t bases[] = {aamMidiInCount, aamMidiOutCount, aamAudioInCount,
                                  aamAudioOutCount};
    const char* const kinds[] = {"min", "mout", "in", "out"};
    const intptr_t counts[] = {fakeState.midiIns, fakeState.midiOuts, 8, 6};
    for (int g = 0; g < 4; ++g) {
        switch (op - bases[g]) {
        case 0:
            return counts[g];
        case 1:
            name(kinds[g], a, b);
            return 0;
        case 2:
            fakeState.flags[g][a] = b != 0;
            return 0;
        case 3:
            return fakeState.flags[g][a];
        default:
            break;
        }
    }
    return 0;
}

} // namespace

intptr_t libaam(intptr_t op, intptr_t a, intptr_t b) {
    fakeState.calls.push_back({op, op == aamInit ? 0 : a});
    switch (op) {
    case aamInit:
        fakeState.callback = reinterpret_cast<AamCallback>(a);
        return 0;
    case aamOpen:
        return fakeState.openResult;
    case aamStart:
        fakeState.running = true;
        return 0;
    case aamStop:
        fakeState.running = false;
        return 0;
    case aamDeviceCount:
        return fakeState.devices;
    case aamDeviceName:
        name("device", a, b);
        return 0;
    case aamFrames:
        return frames(a);
    case aamRate:
        rate(a, b);
        return 0;
    case aamNeedsReopen:
        return fakeState.needsReopen > 0 ? fakeState.needsReopen-- : 0;
    default:
        return channels(op, a, b);
    }
}
