#include "notes/WaveTexts.h"

#include "audiofiles/CSample.h"
#include "audiofiles/SampleMeasures.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "notes/WaveState.h"
#include "sequencer/song/CSeq.h"
#include "ui/LevelText.h"
#include "ui/PlaceText.h"

namespace {

CStr songText(const WaveState& state, int frame) {
    const double tick = state.tickOf(frame);
    return tick < 0 ? CStr("before the song") : placeText(state.seq(), asRound(tick));
}

} // namespace

CStr sampleText(const CSample& sample) {
    const double rate = double(sample.rate);
    return extractFileName(sample.filename) + ", " + (sample.chs == 2 ? "stereo" : "mono") + ", " +
           asStr(asRound(rate)) + " Hz, " + asStr(sample.bits) + " bits, " +
           timeText(sample.frames, rate);
}

CStr rangeText(const WaveState& state) {
    const double rate = double(state.sample()->rate);
    const FrameRange& range = state.range;
    const CStr place =
        asStr(range.from) + ", " + timeText(range.from, rate) + ", " + songText(state, range.from);
    if (range.count() == 0) return "At sample " + place;
    const double ticks = state.tickOf(range.to) - state.tickOf(range.from);
    return "From sample " + place + ",  length " + asStr(range.count()) + " samples, " +
           timeText(range.count(), rate) + ", " + spanText(state.seq(), std::abs(asRound(ticks))) +
           " bars";
}

CStr levelText(const WaveState& state) {
    const FrameRange chosen = state.chosen();
    const SampleLevel level = levelOf(*state.sample(), chosen.from, chosen.to);
    return CStr(level.exact ? "" : "about ") + "peak " + decibelText(level.peak) + ", RMS " +
           decibelText(level.rms);
}
