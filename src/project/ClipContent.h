#pragma once

#include "base/CList.h"
#include "base/CStr.h"
#include "sequencer/song/CPart.h"

#include <memory>
#include <vector>

class CSample;
class ClipKit;
class CSeq;
class CStream;
class DrumKit;
class ItemView;

/// What a clip names its instruments by.
enum ClipDeviceKind : int {
    devicePlugin = 2,  ///< told by its path
    deviceSampler = 3, ///< the built-in synthesizer
};

/// An instrument that a clip of notes is played by.
struct ClipDevice {
    int kind = 0;
    CStr path;                       ///< of a plug-in
    std::vector<unsigned char> data; ///< its program, in the form of the instrument's own files
};

/// What a clip file holds, complete and linked nowhere: a part with all it needs to sound. Owns
/// what was not taken. Interface thread.
///
/// The blocks may stand in any order; unknown ones are skipped. A file of which anything is
/// damaged, missing or too much is refused whole.
class ClipContent {
public:
    static constexpr int mostSamples = 4096, mostDrums = 256;
    static constexpr size_t mostDevices = 16;

    std::unique_ptr<CPart> part; ///< null until a clip was read; a MIDI, audio or drum part
    ListOf<CSample> samples;     ///< in memory: what an audio part plays
    std::vector<ClipDevice> devices;

    /// For the song that the clip may come to.
    explicit ClipContent(CSeq* song);
    ~ClipContent();
    ClipContent(const ClipContent&) = delete;
    ClipContent& operator=(const ClipContent&) = delete;

    /// Reads a file from where `stream` stands to its end; false, and empty, when it is none.
    bool read(CStream* stream);
    DrumKit& drums(); ///< the sounds of a drum part, for no layer yet

private:
    using Reader = bool (ClipContent::*)(const CStr& block, ItemView& item);

    CSeq* seq;
    std::unique_ptr<ClipKit> kit;

    bool readAll(CStream* stream);
    bool eachBlock(CStream* stream, Reader reader);
    bool readContent(const CStr& block, ItemView& item);
    bool readDrums(const CStr& block, ItemView& item);
    bool readPart(CStream* stream);
    bool readSamples(ItemView& item);
    bool readDevice(ItemView& item);
    bool readData(ItemView& item);
    bool samplersWhole();
};
