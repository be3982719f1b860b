#pragma once

#include "base/CStr.h"

#include <functional>

class CSample;

/// What an edit does to the frames of a range. Those of slices and flatten are entries of a menu
/// alone: `process` makes nothing of them.
enum AudioProcess {
    processNormalize = 0, ///< the loudest value of the range becomes full scale
    processDelete = 1,    ///< silence in the range
    processTrim = 2,      ///< silence outside of it
    processBeatslice = 3,
    processAutoslice = 4,
    processFadeIn = 5,  ///< from 0 at its first frame
    processFadeOut = 6, ///< to 0 at the frame behind it
    processReverse = 7,
    processCut = 8,  ///< takes it out
    processMono = 9, ///< the mean of both sides, the whole file
    processFlatten = 10
};

/// Writes the content of `source` to `target`, frames `from` to below `to` edited. Frames that stay
/// as they are and keep their width go over byte by byte. Writes neither a header nor corrects it.
/// False when the target did not take everything, for sources of more than two channels, and for
/// modes that edit nothing. Interface thread or worker; any length, in small blocks.
bool processSample(CSample* source, CSample* target, int from, int to, int mode);

/// Edits of samples, each into a new file. Interface thread.
class CAudioProcessor {
public:
    /// Gives a free name for a file with the stem and extension of `like`, and tells whether it
    /// lies in the temp folder; empty if there is none.
    using NewName = std::function<CStr(const CStr& like, bool& inTemp)>;

    explicit CAudioProcessor(NewName names) : newName(std::move(names)) {}

    int getMode() const { return mode; }
    void setMode(int newMode) { mode = newMode; }
    static CStr getText(int mode); ///< as menus show it; empty for what is no mode

    /// Frames `from` to below `to`, in either order and cut to the sample, through `mode`. A new
    /// sample with its file, not yet to be kept, that the caller owns; null if there is no name, no
    /// room or nothing to do, and then nothing has changed.
    CSample* process(int mode, CSample* source, int from, int to);
    /// A new, empty sample with its file, not yet to be kept, in the format of another; or null.
    CSample* cloneSampleType(CSample* like);
    CSample* createSample(const CStr& like, int rate, int bits, int chs);

private:
    NewName newName;
    int mode = processNormalize;
};
