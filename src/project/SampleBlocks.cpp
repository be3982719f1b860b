#include "project/SampleBlocks.h"

#include "audiofiles/CSample.h"
#include "base/FolderTest.h"
#include "base/LoadBudget.h"
#include "base/Numbers.h"
#include "base/OpenBlock.h"
#include "engine/CQV.h"
#include "project/ItemView.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

namespace {

enum Storage : int { storageMemory = 0, storageFile = 1 };
constexpr unsigned char placeAudioFolder = 0, placeFullPath = 0xFF;
constexpr float usualRate = 44100.0f, highestRate = 384000.0f;

/// The folder whose files are told by their names alone, as they may be missing; empty without one.
CStr ownFolder(const CQV* host) {
    return host->audioFolder.empty() ? CStr() : host->expectedAudioFolder();
}

void writeFormat(CStream* stream, const CSample* sample, Storage storage) {
    stream->writeStr(sample->filename);
    stream->writeFloat(sample->rate);
    for (const int v : {sample->bits, sample->chs, int(storage)})
        stream->writeByte(static_cast<unsigned char>(v));
}

/// As they are stored: little-endian, 32 bits as floats. Zeros for what a file lacks.
void writeFrames(CStream* stream, const CSample* sample) {
    constexpr int piece = 4096;
    std::vector<unsigned char> bytes(size_t(piece) * size_t(sample->frameBytes));
    std::vector<float> floats(size_t(piece) * size_t(sample->chs));
    for (int at = 0; at < sample->frames; at += piece) {
        const int n = std::min(piece, sample->frames - at), size = n * sample->frameBytes;
        if (sample->bigEndian && sample->bits == 32) {
            sample->readFrames(at, n, floats.data());
            stream->write(floats.data(), size);
            continue;
        }
        const int got = sample->readBytes(at, n, bytes.data()) * sample->frameBytes;
        std::fill(bytes.begin() + std::max(0, got), bytes.begin() + size, 0);
        swapToNative(sample->coding(), bytes.data(), int64_t(n) * sample->chs);
        stream->write(bytes.data(), size);
    }
}

Storage storageOf(const CSample* sample) {
    return sample->streamed ? storageFile : storageMemory;
}

void writeRecord2(CStream* stream, const CSample* sample, FolderTest& own) {
    if (!sample->streamed) return writeWithFrames(stream, sample);
    writeFormat(stream, sample, storageFile);
    stream->writeByte(sample->fixedPitch ? 1 : 0);
    stream->writeByte(own.holds(sample->filename) ? placeAudioFolder : placeFullPath);
}

void writeRecord(CStream* stream, const CSample* sample) {
    writeFormat(stream, sample, storageOf(sample));
    if (sample->streamed)
        stream->writeByte(placeFullPath);
    else if (sample->data)
        writeFrames(stream, sample);
}

/// What both forms begin with.
struct Record {
    std::unique_ptr<CSample> sample;
    int storage = 0;
};

Record readFormat(ItemView& item) {
    Record record;
    record.sample = std::make_unique<CSample>();
    CSample& sample = *record.sample;
    sample.filename = item.readStr();
    const float stored = item.readFloat();
    const float rate = std::isfinite(stored) ? fLimit(stored, 1.0f, highestRate) : usualRate;
    const int bits = item.readByte(), chs = item.readByte();
    sample.setFormat(int(rate), bits, chs);
    sample.rate = rate;
    sample.invRate = 1.0f / rate;
    record.storage = item.readByte();
    sample.streamed = record.storage == storageMemory ? 0 : 1;
    return record;
}

bool isPlainFile(const CStr& path) {
    std::error_code failed;
    return std::filesystem::is_regular_file(path.asChar(), failed);
}

void openFile(CSample& sample, bool inAudioFolder, CQV* host) {
    if (inAudioFolder && !host->audioFolder.empty() && !host->projectFile.empty())
        sample.filename = addSep(host->expectedAudioFolder()) + extractFileName(sample.filename);
    const CStr path = sample.filename;
    if (isPlainFile(path)) sample.open(path);
}

/// False when the item has fewer frames than it says.
bool readFrames(ItemView& item, CSample& sample) {
    const int frames = item.readInt();
    const int64_t bytes = int64_t(frames) * sample.frameBytes;
    if (item.tooShort || frames < 0 || !item.has(bytes)) return false;
    if (frames == 0) return true;
    auto* data = static_cast<unsigned char*>(std::malloc(size_t(bytes)));
    if (!data) return false;
    item.read(data, int(bytes));
    sample.takeData(data, frames);
    return true;
}

void addToPool(std::unique_ptr<CSample> sample, CQV* host) {
    host->samples.add(sample.release());
}

bool readRecord2(ItemView& item, CQV* host) {
    Record record = readFormat(item);
    record.sample->fixedPitch = item.readByte() != 0;
    if (record.storage == storageFile) {
        const bool inside = item.readByte() == placeAudioFolder;
        if (!item.tooShort) openFile(*record.sample, inside, host);
    } else if (record.storage == storageMemory && !readFrames(item, *record.sample)) {
        LoadBudget::noteDamage();
        item.skipRest();
        return false;
    }
    if (item.tooShort) return false;
    addToPool(std::move(record.sample), host);
    return true;
}

bool readRecord(ItemView& item, CQV* host) {
    Record record = readFormat(item);
    record.sample->fixedPitch = true;
    if (record.storage == storageMemory) {
        if (!item.tooShort) item.skipRest();
        return false;
    }
    if (record.storage == storageFile) item.readByte();
    if (item.tooShort) return false;
    if (record.storage == storageFile) openFile(*record.sample, false, host);
    addToPool(std::move(record.sample), host);
    return true;
}

/// Reads as many records as the item says, up to the first that fails.
void readRecords(ItemView& item, CQV* host, bool (*readOne)(ItemView& item, CQV* host)) {
    constexpr int about = 1024; // bytes of a sample, without its frames
    const int count = item.readInt();
    for (int i = 0; i < count; ++i) {
        if (!LoadBudget::take("samples", about)) return item.skipRest();
        if (!readOne(item, host)) return;
    }
}

} // namespace

void writeWithFrames(CStream* stream, const CSample* sample) {
    writeFormat(stream, sample, storageMemory);
    stream->writeByte(sample->fixedPitch ? 1 : 0);
    const bool there = sample->data || sample->fp;
    stream->writeInt(there ? int(sample->frames) : 0);
    if (there) writeFrames(stream, sample);
}

std::unique_ptr<CSample> readWithFrames(ItemView& item) {
    Record record = readFormat(item);
    record.sample->fixedPitch = item.readByte() != 0;
    const bool whole = record.storage == storageMemory && readFrames(item, *record.sample);
    return whole ? std::move(record.sample) : nullptr;
}

void writeSamples2(CStream* stream, CQV* host) {
    const OpenBlock block(stream, "samples2");
    stream->writeInt(host->samples.getCount());
    FolderTest own(ownFolder(host));
    for (const auto* sample : host->samples) writeRecord2(stream, sample, own);
}

void writeSamples(CStream* stream, CQV* host) {
    const OpenBlock block(stream, "samples");
    stream->writeInt(host->samples.getCount());
    for (const auto* sample : host->samples) writeRecord(stream, sample);
}

void writeSampleMarks(CStream* stream, CQV* host) {
    std::vector<std::pair<int, const CSample*>> marked;
    int index = 0;
    for (const auto* sample : host->samples) {
        if (!sample->marks.empty()) marked.emplace_back(index, sample);
        index++;
    }
    if (marked.empty()) return;
    const OpenBlock block(stream, "samplemarks");
    stream->writeInt(int(marked.size()));
    for (const auto& [number, sample] : marked) {
        stream->writeInt(number);
        stream->writeInt(int(sample->marks.size()));
        for (const int frame : sample->marks) stream->writeInt(frame);
    }
}

void readSampleMarks(ItemView& item, CQV* host) {
    for (int left = item.readInt(); left > 0 && !item.tooShort; left--) {
        auto* sample = host->samples.items(item.readInt());
        std::vector<int> marks;
        for (int count = item.readInt(); count > 0 && !item.tooShort; count--)
            marks.push_back(item.readInt());
        if (!sample || item.tooShort) continue;
        std::erase_if(marks, [](int frame) { return frame < 0; });
        std::ranges::sort(marks);
        const auto [first, last] = std::ranges::unique(marks);
        marks.erase(first, last);
        sample->marks = std::move(marks);
    }
}

void readSamples2(ItemView& item, CQV* host) {
    readRecords(item, host, readRecord2);
}

void readSamples(ItemView& item, CQV* host) {
    readRecords(item, host, readRecord);
}
