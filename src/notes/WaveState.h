#pragma once

#include "notes/EditedPart.h"
#include "notes/FrameAxis.h"
#include "sequencer/edit/SampleEdits.h"

#include <functional>
#include <optional>
#include <vector>

class CSample;
class CSamplePreview;

/// What the parts of the editor of sound share: a clip of the part with its sample, which stretch
/// of that shows, what is selected, and where the user has marked it. All of them are in the
/// `WaveBody`, which carries out what they ask for. Interface thread.
class WaveState : public EditedPart {
public:
    static constexpr double mostLevel = 1024.0; ///< of `levelZoom`

    FrameAxis axis;
    int index = 0;          ///< of the clip in the part's list
    FrameRange range;       ///< selected; empty it is a place
    bool forward = true;    ///< the end of the range that keys move is its last one
    double levelZoom = 1.0; ///< from 1 on; full scale times this fills a channel
    bool zeroSnap = false;  ///< places go to where the sound crosses zero
    bool looped = false;    ///< the range is heard over and over
    std::vector<int> marks; ///< frames, rising: where slices begin
    bool spectrum = false;  ///< of the range is shown
    int heldPin = -1;       ///< the stretch marker that is dragged
    double pinTarget = 0.;  ///< the frame where what is heard now comes to be its sound
    /// What shows once the edit that was begun last has brought another file.
    struct After {
        FrameRange range;
        std::vector<int> marks;
    };
    std::optional<After> after;
    int version = 0;                       ///< counts the files that showed
    float fadeIn = -1.0f, fadeOut = -1.0f; ///< milliseconds, while they are dragged; else below 0

    using EditedPart::EditedPart;

    ClipPlace place() const { return {part, index}; }
    const CAudioEvent* clip() const { return place().clip(); } ///< null for none
    /// Null unless its frames can be read.
    const CSample* sample() const;
    int frames() const; ///< of the sample, 0 without one
    /// The frames that the part lets the clip play.
    FrameRange heard() const;
    FrameRange chosen() const;    ///< the range; all that is heard if that is empty
    double heardMs() const;       ///< how long that is in the song, at least 1
    double fadeMs(bool in) const; ///< of the fade at the start of the clip, or at its end
    /// The frame at which what is heard begins or ends there, and the one up to which it fades.
    int fadeFoot(bool in) const;
    double fadeHead(bool in) const;

    /// Where a frame of the clip is heard in the song, and back; what lies outside of the clip goes
    /// on at the speed of its start.
    double tickOf(double frame) const;
    double frameOf(double tick) const;
    int pinHere() const; ///< the stretch marker at the place, -1 for none
    /// The share of the clip's ticks, while it plays forward, that ends at a tick of the song.
    double pinShare(double tick) const;
    /// The frame that sounds, of the range alone or of the song; -1 for none.
    double playFrame() const;
    CSamplePreview* preview() const; ///< null while another player has its place

    /// The place that is meant by a pixel: a mark, an end of what is heard or a line of the grid
    /// near by, or with `zeroSnap` the crossing that is nearest; `free` is the frame itself.
    int frameMeant(double x, bool free) const;
    /// Calls `visit(x, bar, beat)` for the bars and beats between two pixels, as many as have room.
    void eachBeat(int fromX, int toX,
                  const std::function<void(int x, int bar, int beat)>& visit) const;

    void keepMarks(); ///< they were changed: a step, and the song keeps them with the sample

    void setRange(int from, int to); ///< in either order, cut to the sample; the second one moves
    int movingEnd() const { return forward ? range.to : range.from; }
    int standingEnd() const { return forward ? range.from : range.to; }

    /// Shows another place, as far as there is any.
    virtual void scrollTo(double frame) = 0;
    virtual void zoomAtPos(int x, double framesPerPixel) = 0; ///< the frame under `x` stays there
    virtual void zoomTo(const FrameRange& frames) = 0;
    virtual void zoomBack() = 0; ///< to what showed before the latest `zoomTo`
    virtual void showSpectrum(bool on) = 0;
    virtual void editDone() = 0; ///< an edit was handed over; it may be carried out later
    virtual void setLevelZoom(double factor) = 0;
    virtual void scrollInView(int frame) = 0;
    virtual bool chooseClip(int number) = 0; ///< of the part; false where there is none
    virtual void rangeChanged() = 0;         ///< shows and tells it
    virtual void shownChanged() = 0;
    virtual int viewWidth() const = 0;

protected:
    ~WaveState() = default;

private:
    int clipTick() const;
};

/// "1:02.345" of so many frames at a rate.
CStr timeText(double frames, double rate);
