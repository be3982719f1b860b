#pragma once

#include <vector>

class CGraphic;
class CSample;

/// What a column of a waveform's picture shows.
struct WaveColumn {
    float low = 0.0f, high = 0.0f;
    float rms = 0.0f; ///< 0 where there are too few frames for it
};

/// One pixel wide at `x`, with full level `high` pixels above `middle`; at least a point.
void paintColumn(CGraphic* g, int colour, const WaveColumn& column, int x, int middle, int high);

/// The columns of a stretch of a sample's picture: from the image of its peaks, or where a column
/// has fewer frames than an entry of that, from the frames themselves, with a line between them
/// where they stand apart. Interface thread.
class WaveColumns {
public:
    /// For columns between two frames, `perColumn` (above 0) frames wide. The sample has at most as
    /// many channels as its image can have.
    WaveColumns(const CSample* sample, double from, double to, double perColumn);
    WaveColumn at(double frame) const; ///< from there on, all channels together
    WaveColumn at(double frame, int channel) const;

private:
    WaveColumn column(double frame, int firstChannel, int endChannel) const;
    WaveColumn fromPeaks(double from, int firstChannel, int endChannel) const;
    WaveColumn fromFrames(double from, int firstChannel, int endChannel) const;
    float valueAt(double frame, int channel) const;

    const CSample* sample;
    double width;
    int first = 0;             ///< of `frames`
    std::vector<float> frames; ///< interleaved; empty when the image will do
};
