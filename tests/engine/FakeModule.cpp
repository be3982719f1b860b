#include "engine/FakeModule.h"

#include <cstdio>
#include <cstring>

extern "C" {
FakeState fakeState;
intptr_t libaam(intptr_t op, intptr_t a, intptr_t b);
}

namespace {

FakeState& fake = fakeState;

intptr_t frames(intptr_t asked) {
    if (asked) fake.askedFrames = asked;
    return fake.grantFrames ? fake.grantFrames : fake.askedFrames;
}

intptr_t rate(intptr_t asked, intptr_t to) {
    if (asked) fake.askedRate = asked;
    const float granted = fake.grantRate != 0.0f ? fake.grantRate : float(fake.askedRate);
    if (to) *reinterpret_cast<float*>(to) = granted;
    return 0;
}

} // namespace

intptr_t libaam(intptr_t op, intptr_t a, intptr_t b) {
    fake.ops.push_back(int(op));
    switch (op) {
    case aamInit:
        fake.callback = reinterpret_cast<AamCallback>(a);
        return 0;
    case aamOpen:
        return fake.openResult;
    case aamDeviceCount:
        return fake.devices;
    case aamDeviceName:
        std::snprintf(reinterpret_cast<char*>(b), aamNameBytes, "device %d",
                      int(a) + fake.firstDevice);
        return 0;
    case aamAudioInName: // as long as its buffer, without an end
        std::memset(reinterpret_cast<void*>(b), 'x', aamNameBytes);
        return 0;
    case aamFrames:
        return frames(a);
    case aamRate:
        return rate(a, b);
    case aamNeedsReopen:
        return fake.needsReopen > 0 ? fake.needsReopen-- : 0;
    case aamAudioInCount:
        return FakeState::audioIns;
    default:
        return 0;
    }
}
