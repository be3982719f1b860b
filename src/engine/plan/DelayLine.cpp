#include "engine/plan/DelayLine.h"

#include "common/Silence.h"

#include <algorithm>
#include <bit>

void DelayLine::setDelay(int frames, int fadeFrames) {
    wanted = std::clamp(frames, 0, longest);
    fadeLength = std::max(1, fadeFrames);
    if (fresh) now = wanted;
}

void DelayLine::skip() {
    fresh = false;
    filled = zeros = 0;
}

void DelayLine::clear() {
    fresh = true;
    filled = fadeLeft = zeros = 0;
    now = wanted;
}

void DelayLine::makeRoom(unsigned frames) {
    const unsigned room = std::min(std::bit_ceil(frames), capacity);
    if (room <= size) return;
    moveTo(room);
    filled = std::min(filled, int(size));
    if (zeros < int(capacity)) zeros = std::min(zeros, int(size));
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

/// Calls `piece(frames of the ring, done, n)` for what lies there in a row, of so many from number
/// `first` on.
template <class Piece>
void DelayLine::eachPiece(unsigned first, int frames, Piece&& piece) const {
    for (int done = 0; done < frames;) {
        const unsigned at = (first + unsigned(done)) & (size - 1);
        const int n = std::min(frames - done, int(size - at));
        piece(ring.get() + at, done, n);
        done += n;
    }
}

void DelayLine::store(const float* left, const float* right, int frames) const {
    eachPiece(next, frames, [&](Frame* room, int done, int n) {
        for (int i = 0; i < n; ++i) room[i] = {left[done + i], right[done + i]};
    });
}

void DelayLine::load(unsigned first, float* left, float* right, int frames) const {
    eachPiece(first, frames, [&](const Frame* from, int done, int n) {
        for (int i = 0; i < n; ++i) {
            left[done + i] = from[i].left;
            right[done + i] = from[i].right;
        }
    });
}

/// From one tap to the other, the first of which may have nothing yet.
void DelayLine::fade(unsigned first, bool silent, float* left, float* right, int frames) {
    for (int i = 0; i < frames; ++i) {
        const unsigned at = first + unsigned(i);
        const Frame out = silent ? Frame{0.0f, 0.0f} : tap(at, now), other = tap(at, to);
        const float share = float(fadeLeft--) / float(fadeLength);
        left[i] = other.left + (out.left - other.left) * share;
        right[i] = other.right + (out.right - other.right) * share;
    }
    if (fadeLeft == 0) now = to;
}

bool DelayLine::passSilence(int frames) {
    makeRoom(unsigned(std::max({now, to, wanted}) + frames));
    if (zeros < int(size) || fadeLeft > 0 || wanted != now) return false;
    fresh = false;
    next += unsigned(frames);
    filled = std::min(filled + frames, int(size));
    return true;
}

bool DelayLine::process(const float* inL, const float* inR, float* outL, float* outR, int frames) {
    const bool silence = isSilent(inL, inR, frames);
    if (silence && passSilence(frames)) return false;
    fresh = false;
    makeRoom(unsigned(std::max({now, to, wanted}) + frames));
    store(inL, inR, frames);
    zeros = silence ? std::min(zeros + frames, int(capacity)) : 0;
    for (int done = 0, n = 0; done < frames; done += n) {
        n = stretch(done, frames);
        const bool silent = filled + done < now;
        const unsigned first = next + unsigned(done);
        if (fadeLeft > 0) {
            fade(first, silent, outL + done, outR + done, n);
        } else if (silent) {
            for (float* side : {outL, outR}) std::fill_n(side + done, n, 0.0f);
        } else {
            load(first - unsigned(now), outL + done, outR + done, n);
        }
    }
    next += unsigned(frames);
    filled = std::min(filled + frames, int(size));
    return true;
}
