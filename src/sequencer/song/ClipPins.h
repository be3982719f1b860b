#pragma once

#include <cstdint>
#include <functional>

struct CAudioEvent;

/// A stretch marker: a frame of the sample that a clip which is stretched to the tempo plays at a
/// time of its own.
struct ClipPin {
    int frame = 0;     ///< of the sample
    float pitch = 0;   ///< semitones by which what lies behind it, up to the next, is tuned besides
    double share = 0.; ///< of the clip's ticks that lie before it while it plays forward

    bool operator==(const ClipPin&) const = default;
};

/// Those of a clip, as they rise. One that lies outside of the clip's range, or would lead back in
/// time, does not count.
struct ClipPins {
    static constexpr int most = 64;
    static constexpr float mostPitch = 24.0f;

    int count = 0;
    ClipPin list[most];

    bool operator==(const ClipPins& other) const;
    const ClipPin* begin() const { return list; }
    const ClipPin* end() const { return list + count; }
};

/// Between two markers, or a marker and an end of the clip, time runs evenly. Counted as the clip
/// plays: of a reversed one from the end of its range.
struct ClipPiece {
    double from = 0, to = 0;           ///< frames from the front
    double shareFrom = 0, shareTo = 1; ///< of the clip's ticks
    float pitch = 0;                   ///< semitones besides the clip's own
};

// Any thread that reads the song; of clips in the hands of playback the graph holder. What lies
// outside of the clip goes on as at its start or end.

/// Whether markers have a say in when a clip's frames play.
bool isPinned(const CAudioEvent* clip);
ClipPiece pieceAt(const CAudioEvent* clip, double framesIn);
/// The share of the clip's ticks that have passed after so many frames, and back.
double shareAt(const CAudioEvent* clip, double framesIn);
double framesAtShare(const CAudioEvent* clip, double share);
/// The share that the frames of the sample from one to before another last.
double shareOfFrames(const CAudioEvent* clip, int from, int to);

/// The clip has got another range of its sample: its markers stay with their frames, and what lies
/// between them keeps its speed beside that of the rest. `before` is the clip with the former one.
void recutPins(CAudioEvent* clip, const CAudioEvent* before);
/// The frames of the sample have moved, as `shift(frame)` tells: each piece keeps its speed.
/// `before` is the clip with the former sample. Returns how much longer all of it lasts, as a
/// factor.
double movePins(CAudioEvent* clip, const CAudioEvent* before,
                const std::function<std::int64_t(int frame)>& shift);
