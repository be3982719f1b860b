#include "data/presets/SoundSample.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"

#include <cmath>
#include <cstdlib>

namespace presets {

CSample* sampleOf(const CStr& name, const std::vector<float>& left,
                  const std::vector<float>& right) {
    constexpr int rate = 44100, bits = 16, sides = 2;
    const size_t frames = left.size();
    auto* data = static_cast<short*>(std::malloc(frames * sides * sizeof(short)));
    if (!data) return nullptr;
    const auto asShort = [](float v) {
        return short(std::lround(fLimit(v, -1.0f, 1.0f) * 32767.0f));
    };
    for (size_t i = 0; i < frames; i++) {
        data[i * sides] = asShort(left[i]);
        data[i * sides + 1] = asShort(right[i]);
    }
    auto* sample = new CSample;
    sample->filename = name;
    sample->setFormat(rate, bits, sides);
    sample->takeData(reinterpret_cast<unsigned char*>(data), int(frames));
    sample->peakfile();
    return sample;
}

} // namespace presets
