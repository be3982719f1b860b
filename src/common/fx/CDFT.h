#pragma once

#include <vector>

/// A small spectrum: how much of the first harmonics of a block's length is in it, not on a
/// logarithmic scale. One thread only, that of the interface.
class CDFT {
public:
    static constexpr int defaultSize = 16, maxSize = 256;

    std::vector<double> bands;  ///< magnitudes, 0 to 1; who shows them lets them fall
    std::vector<double> re, im; ///< sums of the last block, its phases from the middle of it

    explicit CDFT(int size = defaultSize) { setSize(size); }

    /// Number of bands, 1 to `maxSize`; all become 0.
    void setSize(int size);
    int getSize() const { return int(bands.size()); }

    /// Raises the bands to those of the mean of both sides. For band k from 0, with
    /// w = (k + 1) * 6.283 / frames: re and im are the sums of the samples times the cosine and the
    /// sine of w * (n - frames / 2), the magnitude is 2 / frames times their length, at most 1.
    void transform(const float* left, const float* right, int frames);

private:
    std::vector<double> turn;         ///< 2 cos w
    std::vector<double> last, before; ///< the two latest terms of each sum
};
