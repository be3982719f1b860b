#pragma once

#include "base/CStr.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

class CSampleClip;
class CFileStream;
class CStream;

/// A sample of a SoundFont, as its header tells it: 16 bits, one channel.
class CSF2Sample {
public:
    struct Freed {
        void operator()(void* memory) const { std::free(memory); }
    };

    CStr name;
    int start = 0, end = 0; ///< frames of the sample chunk, inside it; `end` is one behind the last
    int loopStart = 0, loopEnd = 0; ///< frames of the sample chunk, as told
    int rate = 44100;
    unsigned char originalPitch = 60; ///< MIDI note, above 127 none
    signed char correction = 0;       ///< cents; without effect
    unsigned short sampleLink = 0, sampleType = 0;
    bool used = false;                  ///< some zone plays it
    std::unique_ptr<short, Freed> data; ///< `getFrames` frames after `CSF2::readData`
    CSampleClip* clip = nullptr;        ///< what an import made of it, not owned
    int index = 0;

    CStr getId() const { return name; }
    int getFrames() const { return end - start; }
    /// Memory for so many bytes in place of `data`; false, and none, when it is not to be had.
    bool setSize(int64_t bytes);
    /// Whether its frames lie in the file: mono, right, left, linked.
    bool inFile() const { return sampleType >= 1 && sampleType <= 8; }
};

/// One zone of an instrument: a sample with the keys and velocities that play it.
class CSF2SampleClip {
public:
    int key = 60; ///< note at which the sample plays as it is
    int lowKey = 0, hiKey = 127, lowVel = 0, hiVel = 127;
    int start = 0, end = 0; ///< first and last frame of the sample that are played
    int loop = 0;           ///< 1 from `loopStart` on
    int loopStart = 0, loopEnd = 0;
    float fine = 0.0f; ///< semitones
    float pan = 0.0f;  ///< -1 to 1
    CSF2Sample* sample = nullptr;

    int getFrames() const { return sample->getFrames(); }
};

/// One use of an instrument by a preset, with the ranges of that use.
class CSF2Instrument {
public:
    CStr name;
    const std::vector<CSF2SampleClip>* clips = nullptr; ///< shared by all uses
    int lowKey = 0, hiKey = 127, lowVel = 0, hiVel = 127;
};

class CSF2Preset {
public:
    CStr name;
    int preset = 0, bank = 0;
    int bag = 0;   ///< first entry in the table of zones
    int index = 0; ///< among the presets of the file
    std::vector<CSF2Instrument> instruments;

    CStr getId() const { return name; }
};

/// Reader of SoundFont 2 files: presets, the instruments they use, and the zones of these with
/// their samples. Envelopes, filters and modulators of the file are left out.
///
/// Damage: a file in which a table is missing or cut off holds nothing. A preset, zone or
/// instrument whose entries run backward, or point outside their table, is left out; samples are
/// cut to the sample chunk. Time and memory grow with the size of the file alone: tables have to
/// ascend, and once samples have claimed twice the chunk, further ones come out empty.
class CSF2 {
public:
    static constexpr int bankDrums = 128;
    static constexpr int slots = 128; ///< of `melodic` and `drums`

    CStr title;                      ///< the file's own name for itself
    CSF2Preset* melodic[slots] = {}; ///< the first presets of bank 0, by number
    CSF2Preset* drums[slots] = {};   ///< the same of bank 128
    std::vector<CSF2Sample> samples; ///< without the closing entry, as the other tables
    int64_t sampleDataPos = 0;       ///< of the first frame in the file
    int sampleFrames = 0;            ///< that the file holds

    CSF2();
    ~CSF2();
    CSF2(const CSF2&) = delete;
    CSF2& operator=(const CSF2&) = delete;

    /// Reads the tables of a file, which stays open for its frames. False when there is no preset
    /// in it that can be used.
    bool open(const CStr& path);
    /// Reads the tables alone, from a stream that begins with the file.
    bool read(CStream* from);
    /// Releases all tables.
    void cleanUp();

    /// Presets in order of their number; those that share one, in order of the file.
    int getPresetCount() const { return int(presets.size()); }
    CSF2Preset* getPreset(int i) { return &presets[size_t(i)]; } ///< `i` below the count

    /// Notes that a zone plays a sample. One too many of those that overlap has no frames then.
    void claim(CSF2Sample* sample);
    /// Reads the frames of a sample that is used. Without memory or file it has none then.
    void readData(CSF2Sample* sample) const;

private:
    struct Chunk;
    struct Bag {
        int gen;
    };
    struct Gen {
        int id, value; ///< the value as a signed 16-bit number
        int low() const { return value & 0xff; }
        int high() const { return value >> 8 & 0xff; }
    };
    struct Inst {
        CStr name;
        int bag = 0;
    };
    /// Entries of a lower table that one entry owns; broken ones are empty.
    struct Span {
        int first = 0, last = 0; ///< `last` is one behind
        bool good = false;
    };
    /// What the generators of a zone have said so far.
    struct Zone;

    std::unique_ptr<CFileStream> file;
    CStream* stream = nullptr; ///< during `read`
    int64_t claimed = 0;       ///< frames of all samples in use
    std::vector<CSF2Preset> presets;
    std::vector<Bag> presetBags, instBags;
    std::vector<Gen> presetGens, instGens;
    std::vector<Inst> insts;
    std::vector<Span> presetSpans, presetBagSpans, instSpans, instBagSpans;
    std::vector<std::vector<CSF2SampleClip>> zones; ///< by instrument
    std::vector<bool> zonesLoaded;

    bool readFile();
    void readInfo(const Chunk& list);
    void readSampleChunk(const Chunk& list);
    bool readTables(const Chunk& list);
    void readSample(CSF2Sample& sample);
    void linkTables();
    void loadPresets();
    void loadInstruments(CSF2Preset& preset, Span bags);
    void addInstrument(CSF2Preset& preset, int index, const CSF2Instrument& ranges);
    void loadSamples(int index);
    void endZone(const Zone& zone, int sampleIndex, std::vector<CSF2SampleClip>& into);

    template <class R, class F>
    void readTable(const Chunk& chunk, int recordBytes, std::vector<R>& into, F&& read);
    template <class R, class F>
    static std::vector<Span> spansOf(const std::vector<R>& table, size_t lower, F&& firstOf);
};

/// A text that ends at a zero byte or after 256 bytes, with its padding to an even count.
CStr ReadZ(CStream* stream);
/// Exactly `n` bytes, of which those up to the first zero are the text.
CStr ReadZNum(CStream* stream, int n);
/// Gives a zone its sample, which is in use from then on, and `rootKey`, the note at which it plays
/// as it is.
void AddSfSample(CSF2* font, CSF2SampleClip* zone, CSF2Sample* sample, int rootKey);
