#pragma once

/// The numbers that a parameter of a plug-in runs through, told as a share of 0 to 1.
struct ParamRange {
    double low = 0.0, high = 1.0;
    bool logarithmic = false; ///< of positive numbers
    bool whole = false;       ///< whole numbers only

    double value(float share) const;
    float share(double value) const;
};
