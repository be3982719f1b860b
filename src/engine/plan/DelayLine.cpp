#include "engine/plan/DelayLine.h"

#include <algorithm>
#include <bit>

void DelayLine::setDelay(int frames, int fadeFrames) {
    wanted = std::clamp(frames, 0, longest);
    fadeLength = std::max(1, fadeFrames);
    if (fresh) now = wanted;
}

void DelayLine::skip() {
    fresh = false;
    filled = 0;
}

void DelayLine::clear() {
    fresh = true;
    filled = fadeLeft = 0;
    now = wanted;
}

void DelayLine::makeRoom(unsigned frames) {
    const unsigned room = std::min(std::bit_ceil(frames), capacity);
    if (room <= size) return;
    moveTo(room);
    filled = std::min(filled, int(size));
    size = room;
}

/// What the ring holds lies in it by the numbers of its frames, and these are those of two rounds
/// at most.
void DelayLine::moveTo(unsigned room) {
    const unsigned here = next & (size - 1);
    const unsigned round = next - here;
    Frame* const frames = ring.get();
    if (const unsigned before = (round - size) & (room - 1); before != 0)
        std::copy(frames + here, frames + size, frames + before + here);
    if (const unsigned behind = round & (room - 1); behind != 0)
        std::copy(frames, frames + here, frames + behind);
}

DelayLine::Frame DelayLine::tap(unsigned at, int distance) const {
    return ring[(at - unsigned(distance)) & (size - 1)];
}

/// The frames from `done` on in which nothing begins or ends; begins a fade that is due there.
int DelayLine::stretch(int done, int frames) {
    if (fadeLeft == 0 && wanted != now && filled + done >= wanted) {
        to = wanted;
        fadeLeft = fadeLength;
    }
    int n = frames - done;
    if (fadeLeft > 0)
        n = std::min(n, fadeLeft);
    else if (wanted != now)
        n = std::min(n, wanted - filled - done);
    if (filled + done < now) n = std::min(n, now - filled - done);
    return n;
}

void DelayLine::process(const float* inL, const float* inR, float* outL, float* outR, int frames) {
    fresh = false;
    makeRoom(unsigned(std::max({now, to, wanted}) + frames));
    for (int i = 0; i < frames; ++i) ring[(next + unsigned(i)) & (size - 1)] = {inL[i], inR[i]};
    for (int done = 0; done < frames;) {
        const int n = stretch(done, frames);
        const bool silent = filled + done < now;
        for (int i = done; i < done + n; ++i) {
            const unsigned at = next + unsigned(i);
            Frame out = silent ? Frame{0.0f, 0.0f} : tap(at, now);
            if (fadeLeft > 0) {
                const Frame other = tap(at, to);
                const float share = float(fadeLeft--) / float(fadeLength);
                out.left = other.left + (out.left - other.left) * share;
                out.right = other.right + (out.right - other.right) * share;
                if (fadeLeft == 0) now = to;
            }
            outL[i] = out.left;
            outR[i] = out.right;
        }
        done += n;
    }
    next += unsigned(frames);
    filled = std::min(filled + frames, int(size));
}
