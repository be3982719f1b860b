#pragma once

#include "base/Geometry.h"

#include <vector>

class CGraphic;
class CSample;
class PixelPaper;
class WaveColumns;
class WaveState;
struct CPalette;

/// Draws the view of a wave: the sample of the clip, with all that lies over it. For one paint.
class WavePainter {
public:
    /// Of `view` all within `asked` is drawn. There is a sample and a song.
    WavePainter(CGraphic* g, const WaveState& state, const CPalette& palette, CRect view,
                CRect asked);

    void paint(int playX); ///< with the play line there; below 0 without

    /// Where a channel of so many lies in a view.
    static CRect channelBox(CRect view, int channel, int channels);
    /// The square by which a fade is taken hold of.
    static CRect fadeHandle(const WaveState& state, CRect view, bool in);
    /// The square at the bottom by which a stretch marker is taken hold of.
    static CRect pinHandle(const WaveState& state, CRect view, double frame);

private:
    struct Inks {
        int line, beat, peak, body, middle;
    };

    void ground();
    void wave();
    void columns(PixelPaper& paper, const WaveColumns& source, int channel, CRect box);
    void points(PixelPaper& paper, CRect box, int channel);
    void values(CRect box, int channel);
    void dim();
    void range();
    void fades();
    void marks();
    void pins();
    void pinHead(double frame, float pitch);
    void mark(int frame, int colour, const CRect& head);
    double yOf(CRect box, float value) const;
    void readFew();

    CGraphic* graphic;
    const WaveState& state;
    const CPalette& palette;
    const CSample& sample;
    const CRect view, asked;
    Inks ink{};
    std::vector<float> few; ///< frames in view, interleaved; where single ones are seen
    int fewFrom = 0;
};
