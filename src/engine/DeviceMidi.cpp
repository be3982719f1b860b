#include "engine/DeviceMidi.h"

#include "engine/CAAM.h"
#include "engine/MidiBytes.h"

#include <algorithm>

namespace {

constexpr int ccSustain = 64, ccAllSoundOff = 120;
constexpr int pedalDown = 64; ///< and above

} // namespace

void DeviceMidi::append(std::span<const AamEvent> in) {
    const size_t count = std::min(in.size(), kept.size() - size_t(numKept));
    std::copy_n(in.begin(), count, kept.begin() + numKept);
    numKept += int(count);
}

void DeviceMidi::keep(std::span<const AamEvent> in) {
    const int before = numKept;
    append(in);
    for (int i = before; i < numKept; ++i) kept[size_t(i)].frame = 0;
}

std::span<const AamEvent> DeviceMidi::take(std::span<const AamEvent> in) {
    const std::span<const AamEvent> all = withKept(in);
    const int reserved = controlIn;
    for (const AamEvent& e : all) {
        if (isClockMessage(e.data)) continue;
        if (reserved >= 0 && e.device == reserved)
            control.push(e);
        else if (copies)
            copied.push(e.data);
    }
    return all;
}

std::span<const AamEvent> DeviceMidi::withKept(std::span<const AamEvent> in) {
    append(in);
    const std::span<const AamEvent> all(kept.data(), size_t(numKept));
    numKept = 0;
    return all;
}

void DeviceMidi::set(size_t at, bool on) {
    if (down[at] == on) return;
    down[at] = on;
    held = held + (on ? 1 : -1);
}

void DeviceMidi::follow(std::span<const AamEvent> out) {
    for (const AamEvent& e : out) {
        const int status = statusByte(e.data), first = asByte1(e.data) & 127;
        const size_t strip = size_t((std::max<int>(e.device, -1) + 1) * channels + chByte(e.data));
        const size_t base = strip * (keys + 1);
        if (noteOn(e.data) || noteOff(e.data)) set(base + size_t(first), noteOn(e.data));
        if (status != midiController) continue;
        if (first == ccSustain) set(base + keys, asByte2(e.data) >= pedalDown);
        if (first != ccAllNotesOff && first != ccAllSoundOff) continue;
        for (size_t key = 0; key < keys; ++key) set(base + key, false);
    }
}

int DeviceMidi::sendOutside(std::span<AamEvent> room) {
    size_t count = 0;
    while (count < room.size() && outside.pop(room[count])) count++;
    return int(count);
}

void DeviceMidi::idle(CAAM& bridge) {
    TimeCode code;
    if (codeOut.takePlace(code)) {
        const FullFrame whole = fullFrame(code);
        bridge.sendExclusive(codeOut.device, {whole.begin(), whole.end()});
    }
    int device = 0;
    std::vector<unsigned char>& bytes = exclusive;
    for (int i = 0; i < mostExclusive && bridge.takeExclusive(device, bytes); i++) {
        if (readFullFrame(bytes, code))
            codeIn.place(device, code);
        else if (onExclusive)
            onExclusive(device, bytes);
    }
}

int DeviceMidi::endNotes(std::span<AamEvent> room) {
    if (!asked) return 0;
    size_t count = 0;
    for (size_t at = 0; held > 0 && at < down.size(); ++at) {
        if (!down[at]) continue;
        if (count == room.size()) return int(count); // the rest comes with the next block
        const size_t strip = at / (keys + 1), key = at % (keys + 1);
        const int ch = int(strip % channels), device = int(strip / channels) - 1;
        const int data = key < keys ? asData(midiNoteOff | ch, int(key), 0)
                                    : asData(midiController | ch, ccSustain, 0);
        room[count++] = {data, int8_t(device), {}, 0};
        set(at, false);
    }
    asked = false;
    return int(count);
}
