#include "arrange/PartPainter.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "arrange/PartColours.h"
#include "arrange/PartHandles.h"
#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/DrawBatch.h"
#include "gui/PixelPaper.h"
#include "gui/Scale.h"
#include "gui/Shapes.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/take/Takes.h"
#include "ui/Options.h"
#include "ui/TrackPalette.h"
#include "ui/WaveColumns.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int leastForHeader = 26; ///< of a part's height
constexpr int textGap = 4, contentGap = 2;
constexpr int beyond = 1000;      ///< how far names go on behind the view
constexpr int leastName = 8;      ///< pixels of a name
constexpr int fewestRows = 12;    ///< that the notes of a part are spread over
constexpr double takeShare = 0.5; ///< of the ground of what is not played of a take

} // namespace

int trackColourOf(const ArrangeRow& row) {
    const int own = row.songTrack->track->colour;
    return own < 0 ? trackColour(row.track) : hexColor(unsigned(own));
}

int partColour(const ArrangeRow& row, const CPart* part) {
    const int own = part->colour;
    return own < 0 ? trackColourOf(row) : hexColor(unsigned(own));
}

PartPainter::PartPainter(const ArrangeState& shown, PartSketches& known, CGraphic* g,
                         PixelPaper& onto, CRect toPaint)
    : state(shown), sketches(known), graphic(g), paper(onto), asked(toPaint),
      askedDevice(onto.deviceRect(toPaint)), originX(onto.deviceRect(asRect(0, 0, 0, 0)).left),
      palette(shown.workspace.mainWindow()->app->gui->palette) {
}

double PartPainter::deviceX(double ticks) const {
    const double x = state.axis().pixelsIn(ticks) - double(state.axis().scroll());
    return originX + x * scalePercent / 100.0;
}

/// The names of parts to the left end where this one begins to cover them.
void PartPainter::coverNames(CRect box) {
    for (auto n = told.rbegin(); n != told.rend() && n->box.top == box.top; ++n) {
        if (n->box.right <= box.left) break;
        n->box.right = asMax(n->box.left, box.left);
    }
}

void PartPainter::part(const ArrangeRow& row, CPart* part, bool heard) {
    CRect box = partBox(state, row, part);
    box.right = asMax(box.right, box.left + 2);
    if (intersect(box, asked).empty()) return;
    const PartColours c = partColours(palette, partColour(row, part), heard && !part->muted());
    CRect header = box;
    const bool high = box.height() >= leastForHeader;
    header.bottom = high ? box.top + headerHeight : box.top;
    frame(part, box, header, c);
    CRect room = asRect(box.left, header.bottom + contentGap, box.right, box.bottom - contentGap);
    const double start = double(part->pos) + part->offset;
    if (part->type == partMIDI) notes(sketches.of(part), start, room, c);
    if (part->type == partDrum) hits(sketches.of(part), start, room, c);
    if (part->type == partAudio) {
        clips(part, room, c);
        fades(part, room, palette.text);
        handles(part, box);
    }
    coverNames(box);
    const auto grips = handlesOf(part, box);
    const int grip = grips.empty() ? 0 : grips.front().box.width();
    const int left = asMax(box.left + grip, 0) + textGap;
    const int right = (grips.empty() ? box.right : grips[1].box.left) - textGap;
    const CRect nameBox = asRect(left, box.top, asMin(right, state.gridWidth() + beyond),
                                 high ? header.bottom : box.bottom);
    if (nameBox.width() < leastName) return;
    told.push_back({nameBox, high ? c.name : palette.text, part->content()->id, part,
                    !row.songTrack->freezeItems.empty()});
}

/// What stands behind the name, at length and in a word: what is out of the ordinary comes first.
std::array<CStr, 2> PartPainter::kindOf(const Name& n) {
    if (n.part->muted()) return {"muted", "muted"};
    if (n.frozen) return {"frozen", "frozen"};
    const CStr kind = n.part->getId();
    return n.part->ghostOf.load() ? std::array<CStr, 2>{kind + " (ghost)", "ghost"}
                                  : std::array<CStr, 2>{kind, kind};
}

void PartPainter::frame(const CPart* part, CRect box, CRect header, const PartColours& c) {
    paper.fill(c.body, box);
    paper.fill(c.header, header);
    if (part->ghostOf.load()) seam(header, c.body);
    if (state.workspace.options().outlineParts.on()) paper.frame(c.outline, box);
    if (!part->selected()) return;
    paper.frame(palette.text, box);
    paper.frame(palette.text, sizeRect(box, 1, 1, -1, -1));
}

/// The lower edge of a ghost's header, which also tells a narrow one.
void PartPainter::seam(CRect header, int colour) {
    constexpr int stitch = 3, step = 6, thick = 2;
    if (header.empty()) return;
    const int first = asMax(0, (asked.left - header.left) / step);
    for (int x = header.left + first * step; x < asMin(header.right, asked.right); x += step)
        paper.fill(colour, asRect(x, header.bottom - thick, asMin(x + stitch, header.right),
                                  header.bottom));
}

/// Notes lie within the range of the part's own keys.
void PartPainter::notes(const PartSketch& s, double start, CRect room, const PartColours& c) {
    if (s.marks.empty() || room.height() < 2) return;
    const CRect device = paper.deviceRect(room);
    const int rows = asMax(fewestRows, s.highest - s.lowest + 1);
    const double rowHeight = double(device.height()) / rows;
    const int thick = asMax(lineThickness(), asInt(rowHeight));
    const int spare = (rows - (s.highest - s.lowest + 1)) / 2;
    const CRect cut = intersect(device, askedDevice);
    if (cut.empty()) return;
    const double firstTick = state.axis().ticksAt(asked.left) - start - s.longest;
    auto m =
        std::partition_point(s.marks.begin(), s.marks.end(),
                             [&](const PartSketch::Mark& mark) { return mark.tick < firstTick; });
    for (; m != s.marks.end(); ++m) {
        const double from = deviceX(start + m->tick);
        if (from >= cut.right) break;
        const int left = asMax(asInt(from), cut.left);
        const int right = asMin(asInt(deviceX(start + m->tick + m->length)), cut.right);
        const int y = device.bottom - asInt((m->row - s.lowest + spare + 1) * rowHeight);
        if (asInt(from) >= device.left || right > device.left)
            paper.fillDevice(m->muted ? c.mute : c.mark,
                             asRect(left, y, asMax(right, left + lineThickness()),
                                    asMin(y + thick, device.bottom)));
    }
}

/// A hit is a diamond in the row of its sound, from the top; where there is no room a dot.
void PartPainter::hits(const PartSketch& s, double start, CRect room, const PartColours& c) {
    if (s.marks.empty() || room.height() < 2) return;
    const CRect device = paper.deviceRect(room);
    const CRect cut = intersect(device, askedDevice);
    if (cut.empty()) return;
    const int rows = asMax(s.highest + 1, 4);
    const double rowHeight = double(device.height()) / rows;
    const int reach = asMax(1, asMin(asInt(rowHeight / 2), toDevice(3)));
    for (const PartSketch::Mark& m : s.marks) {
        const int x = asInt(deviceX(start + m.tick)) + reach;
        if (x + reach < cut.left) continue;
        if (x - reach >= cut.right) break;
        if (x - reach < device.left) continue;
        const int y = device.top + asInt((m.row + 0.5) * rowHeight);
        for (int i = -reach; i <= reach; i++) {
            const int half = reach - std::abs(i);
            paper.fillDevice(m.muted ? c.mute : c.mark,
                             intersect(asRect(x - half, y + i, x + half + 1, y + i + 1), device));
        }
    }
}

void PartPainter::clips(CPart* part, CRect room, const PartColours& c) {
    CSeq* seq = state.seq();
    int tick = part->pos + part->offset;
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next) {
        tick += e->delta;
        const auto* clip = asClip(e);
        const double from = deviceX(tick);
        wave(clip, room, from, deviceX(double(tick) + sampleAsTicks2(seq, clip, tick)), c);
    }
}

void PartPainter::take(const ArrangeRow& row, CPart* part, const Takes* takes) {
    if (!takes || row.take >= int(takes->takes.size())) return;
    const Takes::Take& take = takes->takes[size_t(row.take)];
    const double origin = double(part->pos) + part->offset;
    const CRect whole = partBox(state, row, part);
    const auto boxOf = [&](int from, int to) {
        CRect box = whole;
        box.left = asMax(box.left, state.axis().xOf(origin + from));
        box.right = asMin(box.right, state.axis().xOf(origin + to));
        return box;
    };
    const CRect box = boxOf(take.at, take.to());
    if (box.empty() || intersect(box, asked).empty()) return;
    const int own = partColour(row, part);
    PartColours faint = partColours(palette, own, false);
    faint.body = fadeCol(palette.window, faint.body, takeShare);
    paper.fill(faint.body, box);
    takeContent(part, *takes, row.take, box, faint);
    const PartColours full = partColours(palette, own, !part->muted());
    for (const Takes::Piece& piece : takes->comp) {
        if (piece.take != row.take) continue;
        const CRect played = boxOf(piece.from, piece.to);
        if (played.empty()) continue;
        paper.fill(full.body, played);
        takeContent(part, *takes, row.take, played, full);
        paper.frame(full.outline, played);
    }
}

/// What of a take lies in the room.
void PartPainter::takeContent(CPart* part, const Takes& takes, int index, CRect room,
                              const PartColours& c) {
    const Takes::Take& take = takes.takes[size_t(index)];
    const double start = double(part->pos) + part->offset + take.at;
    room = sizeRect(room, 0, contentGap, 0, -contentGap);
    if (take.notes && take.notes->type == partMIDI)
        notes(sketches.of(*take.notes), start, room, c);
    else if (take.notes)
        hits(sketches.of(*take.notes), start, room, c);
    const auto* like = firstClip(part);
    if (part->type != partAudio || !like) return;
    CAudioEvent clip = *like;
    clip.start = take.start;
    clip.end = take.end;
    wave(&clip, room, deviceX(start), deviceX(start + take.ticks), c);
}

/// Of a part with one clip.
void PartPainter::fades(CPart* part, CRect room, int colour) {
    const CAudioEvent* clip = onlyClip(part);
    if (!clip || (clip->fadeInMs <= 0.0f && clip->fadeOutMs <= 0.0f)) return;
    const double perMs = room.width() / std::max(1.0, partMilliseconds(state, part));
    const auto line = [&](double foot, double head) {
        CPath path;
        path.moveTo(foot, room.bottom);
        path.lineTo(head, room.top);
        paper.stroke(colour, path, 1.5, 0.8);
    };
    const double in = static_cast<double>(clip->fadeInMs) * perMs;
    const double out = static_cast<double>(clip->fadeOutMs) * perMs;
    if (in > 0) line(room.left, room.left + in);
    if (out > 0) line(room.right, room.right - out);
}

void PartPainter::handles(CPart* part, CRect box) {
    for (const DrawnHandle& h : handlesOf(part, box)) {
        paper.fill(palette.text, h.box);
        paper.fill(palette.window, sizeRect(h.box, 2, 2, -2, -2));
    }
}

void PartPainter::wave(const CAudioEvent* clip, CRect room, double fromX, double toX,
                       const PartColours& c) {
    const CSample* sample = clip->sample;
    const CRect device = paper.deviceRect(room), cut = intersect(device, askedDevice);
    if (!sample || sample->chs > PeakImage::maxChannels || toX <= fromX || cut.empty()) return;
    const double reach = device.height() / 2.0, middle = (device.top + device.bottom) / 2.0;
    const double framesPerPixel = double(clip->end - clip->start) / (toX - fromX);
    const int left = asMax(cut.left, asInt(std::ceil(fromX))), right = asMin(cut.right, asInt(toX));
    if (right <= left) return;
    const auto frameAt = [&](int x) {
        const double share = (x - fromX) / (toX - fromX);
        if (isPinned(clip))
            return clip->reverse ? clip->end + 1 - framesPerPixel - framesAtShare(clip, share)
                                 : clip->start + framesAtShare(clip, share);
        return clip->start + (clip->reverse ? toX - 1 - x : x - fromX) * framesPerPixel;
    };
    const double a = frameAt(left), b = frameAt(right - 1);
    const WaveColumns columns(sample, std::min(a, b), std::max(a, b) + framesPerPixel,
                              framesPerPixel);
    const auto bar = [&](int x, float low, float high, int colour) {
        const int top = asInt(middle - double(high) * reach);
        const int bottom = asInt(middle - double(low) * reach);
        paper.fillDevice(colour, intersect(asRect(x, top, x + 1, asMax(bottom, top + 1)), cut));
    };
    for (int x = left; x < right; x++) {
        const WaveColumn w = columns.at(frameAt(x));
        bar(x, w.low, w.high, w.rms > 0.0f ? c.peak : c.mark);
        if (w.rms > 0.0f) bar(x, std::max(w.low, -w.rms), std::min(w.high, w.rms), c.mark);
    }
}

void PartPainter::names() {
    DrawBatch batch(graphic);
    for (const Name& n : told) {
        if (n.box.width() < leastName) continue;
        batch.text(n.colour, n.name, n.box, textLeft);
        CRect rest = n.box;
        rest.left += graphic->textWidth(n.name) + 2 * textGap;
        if (n.box.right >= state.gridWidth() + beyond) continue; // its end is out of sight
        for (const CStr& kind : kindOf(n)) {
            if (rest.width() <= graphic->textWidth(kind)) continue;
            batch.text(n.colour, kind, rest, textRight);
            break;
        }
    }
}
