#include "audiofiles/CSample.h"

#include "audiofiles/CSampleReader.h"
#include "audiofiles/CTakeRing.h"
#include "audiofiles/FileRoom.h"
#include "audiofiles/WavFile.h"
#include "base/Numbers.h"
#include "base/Paths.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <unistd.h>
#include <utility>

Shared<bool> diskWriteFailed{false};
Shared<unsigned> CSample::notices{0};

namespace {

constexpr int maxPlayChannels = 2;
constexpr int maxValueBytes = 4;
constexpr int pieceFrames = 1024; // converted at a time when frames are written
constexpr int flushesPerSecond = 4;

AudioFormat formatOf(const CSample& sample) {
    AudioFormat format;
    format.rate = asRound(double(sample.rate));
    format.bits = sample.bits;
    format.chs = sample.chs;
    format.bigEndian = sample.bigEndian;
    format.frames = sample.frames;
    return format;
}

} // namespace

CSample::CSample() = default;

CSample::~CSample() {
    close();
    if (streamed == 1 && !keep && ownsFile && !filename.empty()) ::unlink(filename.asChar());
}

void CSample::close() {
    valid = false;
    reader.reset();
    if (fp) std::fclose(fp);
    fp = nullptr;
    std::free(data);
    data = nullptr;
    for (std::unique_ptr<float[]>& side : floats) side.reset();
    peaks.reset(chs);
}

void CSample::setFormat(int newRate, int newBits, int newChs) {
    bits = newBits == 24 || newBits == 32 ? newBits : 16;
    rate = float(std::max(1, newRate));
    invRate = 1.0f / rate;
    chs = std::max(1, newChs);
    frameBytes = chs * bits / 8;
    peaks.reset(chs);
    if (reader) createBuffers();
}

bool CSample::open(CStr path) {
    close();
    loop = 0;
    loopStart = 0;
    cues.clear();
    bigEndian = false;
    frames = 0;
    needsPeaks = true;
    filename = std::move(path);
    fp = openAudioFile(filename.asChar());
    AudioFormat format;
    if (fp && readAudioHeader(fp, format)) {
        setFormat(format.rate, format.bits, format.chs);
        bigEndian = format.bigEndian;
        dataStart = format.dataStart;
        loop = format.loop ? 1 : 0;
        loopStart = format.loopStart;
        cues = std::move(format.cues);
        frames = format.frames;
        valid = true;
        streamed ? createBuffers() : load();
    }
    if (fp && !(streamed && valid)) {
        std::fclose(fp);
        fp = nullptr;
    }
    return valid;
}

void CSample::createBuffers() {
    reader.reset();
    if (chs <= maxPlayChannels) reader = std::make_unique<CSampleReader>(*this);
}

void CSample::load() {
    const std::int64_t bytes = std::int64_t(frames) * frameBytes;
    data = static_cast<unsigned char*>(std::malloc(std::size_t(std::max<std::int64_t>(bytes, 1))));
    valid = data && readAt(fp, dataStart, data, bytes) == bytes;
    if (!valid) return;
    swapToNative(coding(), data, std::int64_t(frames) * chs);
    if (bits != 32) bigEndian = false;
    makeFloatData();
}

void CSample::makeFloatData() {
    if (chs > maxPlayChannels || shortData()) return;
    const int count = frames;
    for (int c = 0; c < chs && valid; c++) {
        floats[c].reset(new (std::nothrow) float[std::size_t(count + 2ll * padFrames)]());
        valid = floats[c] != nullptr;
    }
    float mixed[pieceFrames * maxPlayChannels];
    for (int done = 0; done < count && valid; done += pieceFrames) {
        const int n = std::min(pieceFrames, count - done);
        readFrames(done, n, mixed);
        for (int c = 0; c < chs; c++) {
            float* target = floats[c].get() + padFrames + done;
            for (int i = 0; i < n; i++) target[i] = mixed[i * chs + c];
        }
    }
}

const float* CSample::floatData(int side) const {
    return floats[side] ? floats[side].get() + padFrames : nullptr;
}

const std::int16_t* CSample::shortData() const {
    const bool plain = data && chs == 1 && bits == 16 && !bigEndian;
    return plain ? reinterpret_cast<const std::int16_t*>(data) : nullptr;
}

void CSample::takeData(unsigned char* bytes, int count) {
    close();
    data = bytes;
    streamed = 0;
    bigEndian = false;
    frames = std::max(0, count);
    valid = data != nullptr;
    if (valid) makeFloatData();
}

void CSample::readFrames(std::int64_t first, int count, float* out) const {
    const std::int64_t total = frames, from = std::clamp<std::int64_t>(first, 0, total);
    const std::int64_t to = std::clamp<std::int64_t>(first + count, from, total);
    std::fill_n(out, std::int64_t(count) * chs, 0.0f);
    float* target = out + (from - first) * chs;
    if (data) {
        decodeValues(coding(), data + from * frameBytes, int(to - from) * chs, target);
        return;
    }
    alignas(8) unsigned char bytes[4096];
    const int most = int(sizeof bytes) / std::max(1, bits / 8); // values at a time
    std::int64_t left = (to - from) * chs, at = dataStart + from * frameBytes;
    while (fp && left > 0) {
        const int n = int(std::min<std::int64_t>(left, most)), size = n * (bits / 8);
        if (readAt(fp, at, bytes, size) < size) return;
        decodeValues(coding(), bytes, n, target);
        target += n;
        left -= n;
        at += size;
    }
}

int CSample::readBytes(std::int64_t first, int count, unsigned char* out) const {
    const std::int64_t total = frames, from = std::clamp<std::int64_t>(first, 0, total);
    const std::int64_t size = std::min<std::int64_t>(count, total - from) * frameBytes;
    if (data) {
        std::memcpy(out, data + from * frameBytes, std::size_t(size));
        return int(size / frameBytes);
    }
    return fp ? int(readAt(fp, dataStart + from * frameBytes, out, size) / frameBytes) : 0;
}

void CSample::create(CStr path) {
    close();
    filename = std::move(path);
    fp = std::fopen(filename.asChar(), "w+be");
    if (!fp) return;
    streamed = 1;
    const bool aiff = filename.upperCase().pos(".AIF") >= 0;
    if (bigEndian != aiff)
        bigEndian = aiff; // a take that comes to its file now packs frames already
    dataStart = bigEndian ? aiffHeaderBytes : wavHeaderBytes;
    frames = 0;
    headerDone = false;
    createBuffers();
    valid = true;
}

void CSample::writeHeader() {
    if (!fp) return;
    const std::scoped_lock guard(lock);
    writeHeaderLocked();
}

void CSample::writeHeaderLocked() {
    unsigned char header[aiffHeaderBytes];
    const int size = makeAudioHeader(formatOf(*this), header);
    if (writeAt(fp, 0, header, size) < size) diskWriteFailed = true;
    headerDone = true;
}

/// Appends frames under the lock; returns how many the file has room for.
int CSample::append(int count, const unsigned char* bytes) {
    const std::int64_t at = dataStart + std::int64_t(frames) * frameBytes;
    const int wanted = int(std::min<std::int64_t>(count, roomOf(*this)));
    const int kept = int(writeAt(fp, at, bytes, std::int64_t(wanted) * frameBytes) / frameBytes);
    if (kept < count) diskWriteFailed = true;
    writepeak(bytes, kept);
    frames += kept;
    return kept;
}

int CSample::writeBytes(int count, const unsigned char* bytes) {
    if (!fp) return 0;
    const std::scoped_lock guard(lock);
    return append(count, bytes);
}

void CSample::writeFrames(int count, const float* left, const float* right, bool buffered) {
    if (buffered && ring) {
        if (!ring->add(coding(), chs, count, left, right)) diskWriteFailed = true;
        return;
    }
    if (!fp || chs > maxPlayChannels) return;
    unsigned char bytes[pieceFrames * maxPlayChannels * maxValueBytes];
    const std::scoped_lock guard(lock);
    for (int done = 0; done < count; done += pieceFrames) {
        const int n = std::min(pieceFrames, count - done);
        encodeFrames(coding(), chs, n, left + done, right + done, bytes);
        if (append(n, bytes) < n) return;
    }
}

void CSample::prepareTake() {
    if (chs <= maxPlayChannels)
        ring = std::make_unique<CTakeRing>(asRound(double(rate)), frameBytes);
}

/// Writes all that waits; false if the file takes no more.
bool CSample::drainRing() {
    for (CTakeRing::Piece piece = ring->front(); piece.frames > 0; piece = ring->front()) {
        const int kept = append(piece.frames, piece.bytes);
        ring->drop(kept);
        if (kept < piece.frames) return false;
    }
    return true;
}

bool CSample::flushBuffers(bool force) {
    if (!fp || !ring) return false;
    const std::scoped_lock guard(lock);
    const int before = frames;
    const int least = force ? 1 : asRound(double(rate)) / flushesPerSecond;
    if (ring->waiting() >= least)
        while (drainRing() && force && ring->settle()) continue;
    if (force) ring.reset();
    if (frames == before) return false;
    writeHeaderLocked();
    return true;
}

void CSample::finalize() {
    if (fp && std::fflush(fp) != 0) diskWriteFailed = true;
}

void CSample::writepeak(const unsigned char* bytes, int count) {
    if (chs > maxPlayChannels) return;
    float values[PeakImage::framesPerEntry * maxPlayChannels];
    for (int done = 0; done < count; done += PeakImage::framesPerEntry) {
        const int n = std::min(PeakImage::framesPerEntry, count - done);
        decodeValues(coding(), bytes + std::ptrdiff_t(done) * frameBytes, n * chs, values);
        peaks.add(values, n);
    }
}

void CSample::peakfile(const CThread* worker) {
    if (!valid || peakBusy.exchange(true)) return;
    float values[pieceFrames * maxPlayChannels];
    bool going = chs <= maxPlayChannels;
    while (going && peaks.peakFrames < frames) {
        const int n = std::min(pieceFrames, frames - peaks.peakFrames);
        if (const std::int16_t* shorts = shortData()) {
            peaks.add(shorts + peaks.peakFrames, n);
        } else {
            readFrames(peaks.peakFrames, n, values);
            peaks.add(values, n);
        }
        going = !(worker && worker->shallPause());
    }
    needsPeaks = !going && chs <= maxPlayChannels;
    peakBusy = false;
}

CSample* CSample::createSample(const CStr& path, int cached) {
    CSample* sample = new CSample;
    sample->setFormat(44100, 16, 2);
    sample->streamed = 1;
    sample->keep = false;
    sample->cached = cached != 0;
    sample->needsPeaks = false;
    const CStr name = makeUniqueFile(changeFileExt(path, ""), extractFileExt(path), "");
    if (!name.empty()) sample->create(name);
    if (sample->validHandle()) {
        sample->writeHeader();
        return sample;
    }
    sample->ownsFile = false;
    delete sample;
    return nullptr;
}
