#include "notes/WaveKeys.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "gui/Keys.h"
#include "notes/WaveState.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <vector>

namespace {

/// What Control and an arrow stop at, in rising order.
std::vector<int> stops(const WaveState& state) {
    const FrameRange all = state.heard();
    std::vector<int> frames = state.marks;
    for (const ClipPin& pin : state.clip()->pins) frames.push_back(pin.frame);
    for (const AudioCue& cue : state.sample()->cues) frames.push_back(cue.frame);
    for (const int end : {0, all.from, all.to, state.frames()}) frames.push_back(end);
    std::ranges::sort(frames);
    return frames;
}

int nextStop(const WaveState& state, int from, int way) {
    const std::vector<int> frames = stops(state);
    if (way > 0) {
        const auto next = std::ranges::upper_bound(frames, from);
        return next == frames.end() ? from : *next;
    }
    const auto next = std::ranges::lower_bound(frames, from);
    return next == frames.begin() ? from : *(next - 1);
}

/// Where the key leads from a frame; `from` itself for none that moves.
int target(const WaveState& state, int key, int mods, int from) {
    const FrameRange all = state.heard();
    const int way = (key == keyRight || key == keyPageDown) - (key == keyLeft || key == keyPageUp);
    const int pixel = asMax(1, asRound(state.axis.perPixel()));
    switch (key) {
    case keyHome:
        return all.from;
    case keyEnd:
        return all.to;
    case keyPageUp:
    case keyPageDown:
        return saturate(from + int64_t(way) * pixel * state.viewWidth());
    default:
        return mods & modControl ? nextStop(state, from, way)
                                 : saturate(from + int64_t(way) * pixel);
    }
}

bool moves(int key, int mods) {
    if (mods & ~(modShift | modControl)) return false;
    if (key == keyLeft || key == keyRight) return true;
    return !(mods & modControl) &&
           (key == keyHome || key == keyEnd || key == keyPageUp || key == keyPageDown);
}

} // namespace

bool waveKey(WaveState& state, int key, int mods) {
    if (!state.sample() || !state.seq()) return false;
    if (mods == 0 && (key == ::keyUp || key == ::keyDown))
        return state.chooseClip(state.index + (key == ::keyDown ? 1 : -1));
    if (!moves(key, mods)) return false;
    const int to = asMinMax(target(state, key, mods, state.movingEnd()), 0, state.frames());
    state.setRange(mods & modShift ? state.standingEnd() : to, to);
    state.scrollInView(to);
    return true;
}
