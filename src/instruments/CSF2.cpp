#include "instruments/CSF2.h"

#include "audiofiles/WavFile.h"
#include "base/BlockView.h"
#include "base/Numbers.h"

#include <algorithm>
#include <climits>

namespace {

constexpr int chunkHead = 8;
constexpr int nameBytes = 20;
constexpr int presetBytes = 38, bagBytes = 4, genBytes = 4, instBytes = 22, sampleBytes = 46;
constexpr int mostClaims = 2; ///< times the sample chunk
constexpr int middleKey = 60, lastKey = 127;

enum Generator : int {
    genStart = 0,
    genEnd = 1,
    genLoopStart = 2,
    genLoopEnd = 3,
    genStartCoarse = 4,
    genEndCoarse = 12,
    genPan = 17,
    genInstrument = 41,
    genKeyRange = 43,
    genVelRange = 44,
    genLoopStartCoarse = 45,
    genLoopEndCoarse = 50,
    genCoarseTune = 51,
    genFineTune = 52,
    genSampleId = 53,
    genSampleModes = 54,
    genRootKey = 58,
};

int readWord(CStream* s) {
    return (unsigned short)s->readShort();
}
int64_t readDword(CStream* s) {
    return uint32_t(s->readInt());
}

bool loops(int sampleMode) {
    return sampleMode == 1 || sampleMode == 3;
}

} // namespace

struct CSF2::Chunk {
    CStr id;
    int64_t start, size;

    int64_t end() const { return start + size; }

    /// Calls `visit(chunk)` for those from `at` to `end`, up to one that does not fit.
    template <class F>
    static void each(CStream* s, int64_t at, int64_t end, F&& visit) {
        while (end - at >= chunkHead) {
            s->setPos(at);
            Chunk c{ReadZNum(s, 4), at + chunkHead, 0};
            c.size = readDword(s);
            if (c.size > end - c.start) return;
            visit(c);
            at = c.end() + (c.size & 1);
        }
    }
};

struct CSF2::Zone {
    int rootKey = 0, fine = 0; ///< semitones and cents onto the root
    float pan = 0.0f;
    int overridingRoot = -1;
    int sampleMode = 0;
    int lowKey = 0, hiKey = 127, lowVel = 0, hiVel = 127;
    int64_t start = 0, end = 0, loopStart = 0, loopEnd = 0; ///< frames to add

    /// What the next zone begins with, when `global` is the one for all of an instrument. The
    /// sample mode lasts until another one is told.
    Zone next(const Zone& global) const {
        Zone z;
        z.rootKey = global.rootKey;
        z.fine = global.fine;
        z.pan = global.pan;
        z.sampleMode = sampleMode;
        return z;
    }

    void take(const Gen& g) {
        constexpr int64_t coarse = 32768;
        switch (g.id) {
        case genStart:
            start = g.value;
            break;
        case genStartCoarse:
            start += g.value * coarse;
            break;
        case genEnd:
            end = g.value;
            break;
        case genEndCoarse:
            end += g.value * coarse;
            break;
        case genLoopStart:
            loopStart += g.value;
            break;
        case genLoopStartCoarse:
            loopStart += g.value * coarse;
            break;
        case genLoopEnd:
            loopEnd += g.value;
            break;
        case genLoopEndCoarse:
            loopEnd += g.value * coarse;
            break;
        case genPan:
            pan = fLimit(float(g.value) / 500.0f, -1.0f, 1.0f);
            break;
        case genKeyRange:
            lowKey = g.low();
            hiKey = g.high();
            break;
        case genVelRange:
            lowVel = g.low();
            hiVel = g.high();
            break;
        case genCoarseTune:
            rootKey -= g.value;
            break;
        case genFineTune:
            fine = g.value;
            break;
        case genSampleModes:
            sampleMode = g.low();
            break;
        case genRootKey:
            overridingRoot = g.value;
            break;
        default:
            break;
        }
    }
};

bool CSF2Sample::setSize(int64_t bytes) {
    data.reset(static_cast<short*>(std::malloc(size_t(std::max<int64_t>(bytes, 1)))));
    return data != nullptr;
}

CStr ReadZ(CStream* stream) {
    constexpr int longest = 256;
    char text[longest];
    int count = 0, length = -1;
    while (count < longest && length < 0) {
        text[count] = char(stream->readByte());
        if (!text[count]) length = count;
        count++;
    }
    if (count & 1) stream->readByte();
    return {text, size_t(length < 0 ? count : length)};
}

CStr ReadZNum(CStream* stream, int n) {
    CStr text;
    if (!text.resize(n)) return text;
    stream->read(text.buffer(), n);
    return text.asChar();
}

void AddSfSample(CSF2* font, CSF2SampleClip* zone, CSF2Sample* sample, int rootKey) {
    font->claim(sample);
    zone->sample = sample;
    zone->key = rootKey;
}

CSF2::CSF2() = default;
CSF2::~CSF2() = default;

void CSF2::cleanUp() {
    file.reset();
    presets.clear();
    presetBags.clear();
    instBags.clear();
    presetGens.clear();
    instGens.clear();
    insts.clear();
    samples.clear();
    zones.clear();
    zonesLoaded.clear();
    std::fill_n(melodic, slots, nullptr);
    std::fill_n(drums, slots, nullptr);
    title = CStr();
    sampleDataPos = claimed = 0;
    sampleFrames = 0;
}

bool CSF2::open(const CStr& path) {
    auto opened = std::make_unique<CFileStream>(path, 0);
    const bool good = read(opened.get());
    file = std::move(opened);
    return good;
}

bool CSF2::read(CStream* from) {
    cleanUp();
    stream = from;
    if (readFile()) {
        linkTables();
        loadPresets();
    } else {
        cleanUp();
    }
    stream = nullptr;
    return getPresetCount() > 0;
}

// Tables.

bool CSF2::readFile() {
    constexpr int formHead = 12;
    if (!(ReadZNum(stream, 4) == "RIFF")) return false;
    readDword(stream);
    if (!(ReadZNum(stream, 4) == "sfbk")) return false;
    bool complete = false;
    Chunk::each(stream, formHead, stream->getSize(), [&](const Chunk& c) {
        if (!(c.id == "LIST") || c.size < 4) return;
        const CStr kind = ReadZNum(stream, 4);
        const Chunk content{kind, c.start + 4, c.size - 4};
        if (kind == "INFO") readInfo(content);
        if (kind == "sdta") readSampleChunk(content);
        if (kind == "pdta") complete = readTables(content);
    });
    return complete && sampleDataPos > 0;
}

void CSF2::readInfo(const Chunk& list) {
    Chunk::each(stream, list.start, list.end(), [&](const Chunk& c) {
        BlockView text(stream, c.end());
        if (c.id == "INAM") title = ReadZ(&text);
    });
}

void CSF2::readSampleChunk(const Chunk& list) {
    Chunk::each(stream, list.start, list.end(), [&](const Chunk& c) {
        if (!(c.id == "smpl")) return;
        sampleDataPos = c.start;
        sampleFrames = saturate(c.size / int64_t(sizeof(short)));
    });
}

template <class R, class F>
void CSF2::readTable(const Chunk& chunk, int recordBytes, std::vector<R>& into, F&& read) {
    into.clear();
    into.resize(size_t(chunk.size / recordBytes));
    for (R& record : into) read(record);
}

bool CSF2::readTables(const Chunk& list) {
    const auto readBag = [&](Bag& b) {
        b.gen = readWord(stream);
        readWord(stream);
    };
    const auto readGen = [&](Gen& g) {
        g.id = readWord(stream);
        g.value = stream->readShort();
    };
    const auto readInst = [&](Inst& i) {
        i.name = ReadZNum(stream, nameBytes);
        i.bag = readWord(stream);
    };
    const auto readPreset = [&](CSF2Preset& p) {
        p.name = ReadZNum(stream, nameBytes);
        p.preset = readWord(stream);
        p.bank = readWord(stream);
        p.bag = readWord(stream);
        for (int i = 0; i < 3; i++) readDword(stream);
    };
    Chunk::each(stream, list.start, list.end(), [&](const Chunk& c) {
        if (c.id == "phdr") readTable(c, presetBytes, presets, readPreset);
        if (c.id == "pbag") readTable(c, bagBytes, presetBags, readBag);
        if (c.id == "pgen") readTable(c, genBytes, presetGens, readGen);
        if (c.id == "inst") readTable(c, instBytes, insts, readInst);
        if (c.id == "ibag") readTable(c, bagBytes, instBags, readBag);
        if (c.id == "igen") readTable(c, genBytes, instGens, readGen);
        if (c.id == "shdr")
            readTable(c, sampleBytes, samples, [&](CSF2Sample& s) { readSample(s); });
    });
    return !presets.empty() && !presetBags.empty() && !presetGens.empty() && !insts.empty() &&
           !instBags.empty() && !instGens.empty() && !samples.empty();
}

void CSF2::readSample(CSF2Sample& s) {
    s.name = ReadZNum(stream, nameBytes);
    const int64_t from = readDword(stream), to = readDword(stream);
    s.start = int(std::min<int64_t>(from, INT_MAX));
    s.end = int(std::min<int64_t>(to, INT_MAX));
    s.loopStart = saturate(readDword(stream));
    s.loopEnd = saturate(readDword(stream));
    s.rate = saturate(readDword(stream));
    s.originalPitch = (unsigned char)stream->readByte();
    s.correction = (signed char)stream->readByte();
    s.sampleLink = (unsigned short)readWord(stream);
    s.sampleType = (unsigned short)readWord(stream);
}

template <class R, class F>
std::vector<CSF2::Span> CSF2::spansOf(const std::vector<R>& table, size_t lower, F&& firstOf) {
    std::vector<Span> spans(table.size() - 1);
    int passed = 0;
    for (size_t i = 0; i < spans.size(); i++) {
        const int first = firstOf(table[i]), last = firstOf(table[i + 1]);
        if (first < passed || last < first || last >= int(lower)) continue;
        spans[i] = {first, last, true};
        passed = last;
    }
    return spans;
}

/// The last entry of each table only closes the one before; samples keep theirs out of the way.
void CSF2::linkTables() {
    const auto firstBag = [](const auto& r) { return r.bag; };
    const auto firstGen = [](const Bag& b) { return b.gen; };
    presetSpans = spansOf(presets, presetBags.size(), firstBag);
    presetBagSpans = spansOf(presetBags, presetGens.size() + 1, firstGen);
    instSpans = spansOf(insts, instBags.size(), firstBag);
    instBagSpans = spansOf(instBags, instGens.size() + 1, firstGen);
    presets.pop_back();
    insts.pop_back();
    samples.pop_back();
    for (size_t i = 0; i < samples.size(); i++) {
        CSF2Sample& s = samples[i];
        s.index = int(i);
        s.end = std::min(s.end, sampleFrames);
        s.start = std::min(s.start, s.end);
    }
    zones.resize(insts.size());
    zonesLoaded.assign(insts.size(), false);
}

// Presets.

void CSF2::loadPresets() {
    std::vector<CSF2Preset> usable;
    for (size_t i = 0; i < presets.size(); i++) {
        if (!presetSpans[i].good) continue;
        loadInstruments(presets[i], presetSpans[i]);
        usable.push_back(std::move(presets[i]));
    }
    std::ranges::stable_sort(usable, {}, &CSF2Preset::preset);
    presets = std::move(usable);
    int melodicCount = 0, drumCount = 0;
    for (size_t i = 0; i < presets.size(); i++) {
        CSF2Preset& p = presets[i];
        p.index = int(i);
        if (p.bank == 0 && melodicCount < slots) melodic[melodicCount++] = &p;
        if (p.bank == bankDrums && drumCount < slots) drums[drumCount++] = &p;
    }
}

void CSF2::loadInstruments(CSF2Preset& preset, Span bags) {
    for (int bag = bags.first; bag < bags.last; bag++) {
        const Span gens = presetBagSpans[size_t(bag)];
        CSF2Instrument ranges;
        for (int i = gens.first; i < gens.last; i++) {
            const Gen& g = presetGens[size_t(i)];
            if (g.id == genKeyRange) {
                ranges.lowKey = g.low();
                ranges.hiKey = g.high();
            } else if (g.id == genVelRange) {
                ranges.lowVel = g.low();
                ranges.hiVel = g.high();
            } else if (g.id == genInstrument) {
                addInstrument(preset, g.value & 0xffff, ranges);
            }
        }
    }
}

void CSF2::addInstrument(CSF2Preset& preset, int index, const CSF2Instrument& ranges) {
    if (index >= int(insts.size()) || !instSpans[size_t(index)].good) return;
    if (!zonesLoaded[size_t(index)]) loadSamples(index);
    preset.instruments.push_back(ranges);
    preset.instruments.back().name = insts[size_t(index)].name;
    preset.instruments.back().clips = &zones[size_t(index)];
}

void CSF2::loadSamples(int index) {
    zonesLoaded[size_t(index)] = true;
    const Span bags = instSpans[size_t(index)];
    Zone global, zone;
    for (int bag = bags.first; bag < bags.last; bag++) {
        const Span gens = instBagSpans[size_t(bag)];
        zone = zone.next(global);
        int i = gens.first;
        for (; i < gens.last && instGens[size_t(i)].id != genSampleId; i++)
            zone.take(instGens[size_t(i)]);
        if (i < gens.last)
            endZone(zone, instGens[size_t(i)].value & 0xffff, zones[size_t(index)]);
        else if (gens.good)
            global = zone;
    }
}

void CSF2::endZone(const Zone& z, int sampleIndex, std::vector<CSF2SampleClip>& into) {
    if (sampleIndex >= int(samples.size()) || !samples[size_t(sampleIndex)].inFile()) return;
    CSF2Sample& sample = samples[size_t(sampleIndex)];
    CSF2SampleClip clip;
    const int own = sample.originalPitch <= lastKey ? sample.originalPitch : middleKey;
    AddSfSample(this, &clip, &sample, (z.overridingRoot >= 0 ? z.overridingRoot : own) + z.rootKey);
    clip.lowKey = z.lowKey;
    clip.hiKey = z.hiKey;
    clip.lowVel = z.lowVel;
    clip.hiVel = z.hiVel;
    clip.fine = float(z.fine) * 0.01f;
    clip.pan = z.pan;
    const auto inside = [&](int64_t frame) {
        return int(std::clamp<int64_t>(frame, 0, std::max(0, sample.getFrames() - 1)));
    };
    clip.start = inside(z.start);
    clip.end = inside(sample.getFrames() + z.end);
    clip.loopEnd = clip.end;
    if (loops(z.sampleMode)) {
        clip.loop = 1;
        clip.loopStart = inside(int64_t(sample.loopStart) - sample.start + z.loopStart);
        clip.loopEnd = inside(int64_t(sample.loopEnd) - sample.start + z.loopEnd);
    }
    into.push_back(clip);
}

void CSF2::claim(CSF2Sample* sample) {
    if (sample->used) return;
    sample->used = true;
    claimed += sample->getFrames();
    if (claimed > int64_t(mostClaims) * sampleFrames) sample->end = sample->start;
}

void CSF2::readData(CSF2Sample* sample) const {
    const int64_t bytes = int64_t(sample->getFrames()) * int64_t(sizeof(short));
    const int64_t from = sampleDataPos + int64_t(sample->start) * int64_t(sizeof(short));
    if (file && file->isOpen() && sample->setSize(bytes) &&
        readAt(file->file, from, sample->data.get(), bytes) == bytes)
        return;
    sample->data.reset();
    sample->end = sample->start;
}
