#include "engine/TimeCode.h"

#include <algorithm>

namespace {

constexpr int rounded[codeRates] = {24, 25, 30, 30};
constexpr int64_t droppedPerMinute = 2, framesOfMinute = 1798, framesOfTen = 17982;
constexpr int dayHours = 24, minuteSeconds = 60, hourMinutes = 60;

/// Numbers that were left out up to a frame: two at each minute but the tenth.
int64_t left(int64_t frame) {
    const int64_t tens = frame / framesOfTen, rest = frame % framesOfTen;
    const int64_t minutes = std::max<int64_t>((rest - droppedPerMinute) / framesOfMinute, 0);
    return droppedPerMinute * (9 * tens + minutes);
}

} // namespace

double framesPerSecond(CodeRate rate) {
    return rate == CodeRate::drop30 ? 30000.0 / 1001.0 : double(rounded[int(rate)]);
}

TimeCode TimeCode::ofFrame(int64_t frame, CodeRate rate) {
    const int fps = rounded[int(rate)];
    int64_t count = std::max<int64_t>(frame, 0);
    if (rate == CodeRate::drop30) count += left(count);
    TimeCode code;
    code.rate = rate;
    code.frames = int(count % fps);
    count /= fps;
    code.seconds = int(count % minuteSeconds);
    count /= minuteSeconds;
    code.minutes = int(count % hourMinutes);
    code.hours = int(count / hourMinutes % dayHours);
    return code;
}

int64_t TimeCode::frame() const {
    const int64_t allMinutes = int64_t(hours) * hourMinutes + minutes;
    const int64_t count = (allMinutes * minuteSeconds + seconds) * rounded[int(rate)] + frames;
    if (rate != CodeRate::drop30) return count;
    return count - droppedPerMinute * (allMinutes - allMinutes / 10);
}

int TimeCode::piece(int index) const {
    const int values[] = {frames, seconds, minutes, hours | int(rate) << 5};
    return index << 4 | (values[index / 2] >> (index % 2 * 4) & 15);
}

TimeCode TimeCode::ofPieces(const std::array<int, 8>& nibbles) {
    const auto value = [&](size_t i) { return nibbles[i] | nibbles[i + 1] << 4; };
    TimeCode code;
    code.rate = CodeRate(value(6) >> 5 & 3);
    code.frames = std::min(value(0) & 31, rounded[int(code.rate)] - 1);
    code.seconds = std::min(value(2) & 63, minuteSeconds - 1);
    code.minutes = std::min(value(4) & 63, hourMinutes - 1);
    code.hours = std::min(value(6) & 31, dayHours - 1);
    return code;
}

FullFrame fullFrame(const TimeCode& code) {
    const auto byte = [](int value) { return static_cast<unsigned char>(value); };
    return {0xF0,
            0x7F,
            0x7F,
            0x01,
            0x01,
            byte(code.hours | int(code.rate) << 5),
            byte(code.minutes),
            byte(code.seconds),
            byte(code.frames),
            0xF7};
}

bool readFullFrame(std::span<const unsigned char> bytes, TimeCode& code) {
    const FullFrame like = fullFrame({});
    if (bytes.size() != like.size() || bytes[0] != like[0] || bytes[1] != like[1] ||
        bytes[3] != like[3] || bytes[4] != like[4] || bytes[9] != like[9])
        return false;
    std::array<int, 8> nibbles{};
    for (size_t i = 0; i < 4; i++) {
        const int value = bytes[8 - i];
        nibbles[2 * i] = value & 15;
        nibbles[2 * i + 1] = value >> 4;
    }
    code = TimeCode::ofPieces(nibbles);
    return true;
}
