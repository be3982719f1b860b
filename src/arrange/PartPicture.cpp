#include "arrange/PartPicture.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "gui/CGraphic.h"
#include "sequencer/CSeq.h"
#include "sequencer/ClipTimes.h"

#include <algorithm>

namespace {

constexpr int margin = 4; ///< above and below what is drawn
constexpr int lowestNote = 24, highestNote = 100, mostSounds = 16;
constexpr int stroke = 2;

/// A stroke at a share of the box's height, 0 at its bottom.
void drawStroke(CGraphic* g, CRect box, int colour, int from, int to, double share) {
    const int y = box.bottom - margin - asInt(share * (box.height() - 2 * margin));
    g->fillRect(colour, asRect(asMax(from, box.left), y, asMin(to, box.right - 1), y + stroke));
}

double noteShare(const CMIDIEvent* note) {
    const int key = asMinMax(asByte1(note->data), lowestNote, highestNote);
    return double(key - lowestNote) / (highestNote - lowestNote);
}

struct Extremes {
    float low = 0.0f, high = 0.0f;
};

/// Of the frames from `from` on, all channels together.
Extremes extremesOf(const CSample* sample, double from, double to) {
    Extremes e;
    const PeakImage& peaks = sample->peaks;
    const int first = asMax(0, asInt(from / PeakImage::framesPerEntry));
    const int end = asMin(peaks.count(), asInt(to / PeakImage::framesPerEntry) + 1);
    for (int i = first; i < end; i++) {
        const unsigned char* lane = peaks.entry(i);
        for (int c = 0; c < sample->chs; c++, lane += 2) {
            e.low = std::min(e.low, PeakImage::decode(lane[0]));
            e.high = std::max(e.high, PeakImage::decode(lane[1]));
        }
    }
    return e;
}

void drawWave(CGraphic* g, const CAudioEvent* clip, CRect box, int colour, int from, int to) {
    const CSample* sample = clip->sample;
    if (!sample || sample->chs > PeakImage::maxChannels || to <= from) return;
    const double reach = box.height() / 2.0 - margin, middle = (box.top + box.bottom) / 2.0;
    const double framesPerPixel = double(clip->end - clip->start) / (to - from);
    for (int x = asMax(from, box.left + 1); x < asMin(to, box.right - 1); x++) {
        const int at = clip->reverse ? to - 1 - x : x - from;
        const double frame = clip->start + at * framesPerPixel;
        const Extremes e = extremesOf(sample, frame, frame + framesPerPixel);
        const int top = asInt(middle - double(e.high) * reach);
        const int bottom = asInt(middle - double(e.low) * reach);
        g->fillRect(colour, asRect(x, top, x + 1, asMax(bottom, top + 1)));
    }
}

} // namespace

void drawPartContent(CGraphic* g, CSeq* seq, CPart* part, CRect box, int colour,
                     const std::function<int(double)>& xOf) {
    int tick = part->pos + part->offset;
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next) {
        tick += e->delta;
        const int from = xOf(tick);
        const auto drawLine = [&](int length, double share) {
            drawStroke(g, box, colour, from, asMax(from + 1, xOf(double(tick) + length)), share);
        };
        if (part->type == partMIDI) {
            const auto* note = static_cast<const CMIDIEvent*>(e);
            if (noteOn(note->data)) drawLine(note->length, noteShare(note));
        } else if (part->type == partDrum) {
            const auto* hit = static_cast<const CDrumEvent*>(e);
            drawLine(0, double(asMinMax(hit->sound, 0, mostSounds - 1)) / mostSounds);
        } else if (part->type == partAudio) {
            const auto* clip = static_cast<const CAudioEvent*>(e);
            drawWave(g, clip, box, colour, from,
                     xOf(double(tick) + sampleAsTicks2(seq, clip, tick)));
        }
    }
}
