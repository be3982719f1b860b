#include "audiofiles/CSampleReader.h"

#include "audiofiles/CSample.h"
#include "audiofiles/WavFile.h"
#include "base/Futex.h"

#include <algorithm>
#include <cstddef>

namespace {

/// At least what two calls for neighbouring stretches of sound have in common.
constexpr int overlapFrames = 16;

} // namespace

/// Voices of one sample that two threads play at once: the one waits for the other's few frames.
class CSampleReader::PlayingTurn {
public:
    explicit PlayingTurn(Shared<bool>& word) : taken(word) {
        while (taken.exchange(true)) spinPause();
    }
    ~PlayingTurn() { taken.storeRelease(false); }
    PlayingTurn(const PlayingTurn&) = delete;
    PlayingTurn& operator=(const PlayingTurn&) = delete;

private:
    Shared<bool>& taken;
};

CSampleReader::CSampleReader(const CSample& of)
    : sample(of), capacity(bufferBytes - bufferBytes % of.frameBytes),
      memory(new unsigned char[2ull * bufferBytes]) {
    for (int i = 0; i < 2; i++) buffers[i].data = memory.get() + std::ptrdiff_t(i) * bufferBytes;
}

std::int64_t CSampleReader::readFile(std::int64_t offset, unsigned char* out, std::int64_t bytes) {
    return sample.fp ? readAt(sample.fp, offset, out, bytes) : 0;
}

std::int64_t CSampleReader::totalBytes() const {
    return std::int64_t(sample.frames) * sample.frameBytes;
}

CSampleReader::Span CSampleReader::clip(std::int64_t first, int count, bool backward) const {
    const std::int64_t total = sample.frames;
    const std::int64_t from = std::clamp<std::int64_t>(first, 0, total);
    const std::int64_t to = std::clamp<std::int64_t>(first + count, from, total);
    return {from * sample.frameBytes, to * sample.frameBytes, backward};
}

void CSampleReader::getData(std::int64_t first, int count, float* out, bool backward, bool live) {
    const PlayingTurn turn(playing);
    const Span whole = clip(first, count, backward);
    const int valueBytes = sample.bits / 8;
    float* const outEnd = out + std::int64_t(count) * sample.chs;
    const std::int64_t lead = whole.end > whole.at ? whole.at / sample.frameBytes - first : count;
    float* target = std::fill_n(out, lead * sample.chs, 0.0f);
    CBuffer* buffer = nullptr;
    for (Span left = whole; left.at < left.end;) {
        buffer = holder(left.at);
        if (!buffer && !(live && isComing(left.at))) buffer = fetch(left);
        if (!buffer) break;
        const int bytes = int(std::min(left.end, buffer->pos + buffer->size) - left.at);
        const unsigned char* from = buffer->data + (left.at - buffer->pos);
        decodeValues(sample.coding(), from, bytes / valueBytes, target);
        target += bytes / valueBytes;
        left.at += bytes;
    }
    if (buffer) askAround(*buffer, whole);
    std::fill(target, outEnd, 0.0f);
}

void CSampleReader::prime(std::int64_t first, int count, bool backward) {
    const PlayingTurn turn(playing);
    const Span span = clip(first, count, backward);
    if (span.at >= span.end) return;
    CBuffer* buffer = holder(span.at);
    if (!buffer) buffer = fetch(span);
    if (buffer) askAround(*buffer, span);
}

CBuffer* CSampleReader::holder(std::int64_t at) {
    for (CBuffer& b : buffers)
        if (b.state.loadAcquire() == bufferHeld && at >= b.pos && at < b.pos + b.size) return &b;
    return nullptr;
}

bool CSampleReader::isComing(std::int64_t at) {
    return std::any_of(std::begin(buffers), std::end(buffers), [&](const CBuffer& b) {
        return b.state.loadAcquire() == bufferReading && at >= b.next && at < b.next + capacity;
    });
}

/// Reads what `span` begins with into the buffer that is least of use, or returns null: both are
/// being read, or the file has less than it told.
CBuffer* CSampleReader::fetch(const Span& span) {
    std::int64_t from = span.at;
    if (span.backward) from = std::max<std::int64_t>(0, std::min(from, span.end - capacity));
    const bool firstIsHeld = buffers[0].state.loadAcquire() == bufferHeld;
    for (CBuffer* b : {&buffers[firstIsHeld], &buffers[!firstIsHeld]}) {
        if (!claim(*b)) continue;
        fill(*b, from);
        return holder(span.at);
    }
    return nullptr;
}

/// Takes a buffer from whatever state for this thread, unless it is being read.
bool CSampleReader::claim(CBuffer& buffer) {
    int state = buffer.state.loadAcquire();
    while (state != bufferReading)
        if (buffer.state.compareExchange(state, bufferReading)) return true;
    return false;
}

void CSampleReader::fill(CBuffer& buffer, std::int64_t offset) {
    buffer.pos = offset;
    const std::int64_t most = std::min<std::int64_t>(capacity, totalBytes() - offset);
    const std::int64_t got = most > 0 ? readFile(sample.dataStart + offset, buffer.data, most) : 0;
    buffer.size = int(got - got % sample.frameBytes);
    buffer.state.storeRelease(bufferHeld);
}

/// Asks for what lies behind `played`, or in front of it if the way is backward, in the other
/// buffer; but not while the next call may begin there, since neighbouring calls overlap.
void CSampleReader::askAround(const CBuffer& played, const Span& span) {
    CBuffer& other = buffers[&played == &buffers[0]];
    const std::int64_t overlap = std::int64_t(overlapFrames) * sample.frameBytes;
    const std::int64_t end = played.pos + played.size;
    if (!span.backward && span.end - overlap >= played.pos && end < totalBytes())
        ask(other, end, end);
    if (span.backward && span.at + overlap <= end && played.pos > 0)
        ask(other, std::max<std::int64_t>(0, played.pos - capacity), played.pos - 1);
}

/// Requests a read at `offset` unless one is under way or the byte at `needed` is there.
void CSampleReader::ask(CBuffer& buffer, std::int64_t offset, std::int64_t needed) {
    const int state = buffer.state.loadAcquire();
    if (state == bufferWanted && buffer.next == offset) return;
    if (state == bufferHeld && needed >= buffer.pos && needed < buffer.pos + buffer.size) return;
    if (!claim(buffer)) return;
    buffer.next = offset;
    buffer.state.storeRelease(bufferWanted);
}

bool CSampleReader::serve() {
    bool served = false;
    for (CBuffer& b : buffers) {
        int wanted = bufferWanted;
        if (!b.state.compareExchange(wanted, bufferReading)) continue;
        fill(b, b.next);
        served = true;
    }
    return served;
}
