#include "ui/LevelText.h"

#include "audiofiles/SampleMeasures.h"
#include "base/Numbers.h"

CStr decibelText(float level) {
    constexpr double silent = -200.0; // and below
    constexpr double almostFull = -0.05;
    const double db = decibels(level);
    if (db <= silent) return "-inf dB";
    return asStrFormat(db > almostFull && db < 0 ? 0.0 : db, "%.1f") + " dB";
}
