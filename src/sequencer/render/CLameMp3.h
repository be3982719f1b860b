#pragma once

#include "base/CObject.h"
#include "base/CStr.h"

#include <functional>

/// Encodes and decodes MP3 with the outside tool `lame`, found through PATH. Interface thread.
class CLameMp3 : public CObject {
public:
    /// Asked while the tool runs; false ends it. Null: it runs to its end.
    std::function<bool()> goOn;

    void setBitrate(int kbits) { bitrate = kbits; } ///< kilobits per second

    // Each returns the tool's exit status, 127 without the tool.
    int encode(const CStr& wav, const CStr& mp3);
    int decode(const CStr& mp3, const CStr& wav);

private:
    enum Mode { modeEncode, modeDecode };
    int runProcess(Mode mode, const CStr& first, const CStr& second);

    int bitrate = 128;
};
