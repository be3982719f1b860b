#include "audiofiles/WavFile.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int chunkHead = 8, fmtBytes = 16, commBytes = 18;
constexpr int ssndHead = 8;                      // offset and block size in front of the frames
constexpr int smplHead = 36, smplLoopBytes = 24; // the head up to the loops, one loop
constexpr int smplCountAt = 28, loopStartAt = 8; // where they hold the count and the start
constexpr int cueBytes = 24, cueFrameAt = 20, labelHead = 12, mostLabel = 256;
constexpr int tagPcm = 1, tagFloat = 3;
constexpr int exponentTop = 30; // low exponent byte of a rate whose mantissa needs no shift

unsigned getLittle(const unsigned char* p, int bytes) {
    unsigned value = 0;
    for (int i = bytes - 1; i >= 0; i--) value = value << 8 | p[i];
    return value;
}

unsigned getBig(const unsigned char* p, int bytes) {
    unsigned value = 0;
    for (int i = 0; i < bytes; i++) value = value << 8 | p[i];
    return value;
}

void putLittle(unsigned char* p, unsigned value, int bytes) {
    for (int i = 0; i < bytes; i++, value >>= 8) p[i] = static_cast<unsigned char>(value);
}

void putBig(unsigned char* p, unsigned value, int bytes) {
    for (int i = bytes - 1; i >= 0; i--, value >>= 8) p[i] = static_cast<unsigned char>(value);
}

void putText(unsigned char* p, std::string_view text) {
    std::copy(text.begin(), text.end(), p);
}

/// The rate of an AIFF file, or 0 for an exponent that no integer rate has. The shift rounds by
/// the last bit that it drops.
unsigned rateFromExtended(const unsigned char* p) {
    const int shift = exponentTop - p[1];
    if (shift < 0 || shift > exponentTop) return 0;
    const unsigned mantissa = getBig(p + 2, 4);
    return (mantissa >> shift) + (shift > 0 ? mantissa >> (shift - 1) & 1 : 0);
}

void rateToExtended(int rate, unsigned char* p) {
    int zeros = 0;
    while (zeros < exponentTop && !(unsigned(rate) >> (exponentTop - zeros) & 1)) zeros++;
    p[0] = 0x40;
    p[1] = static_cast<unsigned char>(exponentTop - 1 - zeros);
    putBig(p + 2, unsigned(rate) << (zeros + 1), 4);
    std::memset(p + 6, 0, 4);
}

/// One walk through the chunks of a file.
class ChunkWalk {
public:
    ChunkWalk(std::FILE* handle, AudioFormat& target)
        : file(handle), format(target), fileSize(audioFileSize(handle)) {}

    bool run() {
        unsigned char head[12];
        if (readAt(file, 0, head, sizeof head) < std::int64_t(sizeof head)) return false;
        const bool wav = !std::memcmp(head, "RIFF", 4) && !std::memcmp(head + 8, "WAVE", 4);
        format.bigEndian = !std::memcmp(head, "FORM", 4) && !std::memcmp(head + 8, "AIFF", 4);
        if (!wav && !format.bigEndian) return false;
        pos = sizeof head;
        while (going && next()) wav ? wavChunk() : aiffChunk();
        takeCues();
        return valid;
    }

private:
    std::FILE* file;
    AudioFormat& format;
    std::int64_t fileSize, pos = 0;
    unsigned char id[4] = {};
    std::int64_t start = 0, size = 0; // of the chunk's content; the size is not trusted
    bool known = false, valid = false, going = true;

    bool next() {
        unsigned char head[chunkHead];
        if (pos >= fileSize || readAt(file, pos, head, chunkHead) < chunkHead) return false;
        std::memcpy(id, head, sizeof id);
        size = std::int32_t(format.bigEndian ? getBig(head + 4, 4) : getLittle(head + 4, 4));
        if (size < 0) return false;
        start = pos + chunkHead;
        pos = start + size; // odd sizes are not padded
        return true;
    }

    bool is(const char* name) const { return !std::memcmp(id, name, sizeof id); }
    std::int64_t held() const {
        return std::max<std::int64_t>(0, std::min(size, fileSize - start));
    }
    void refuse() { going = valid = false; }

    void setFormat(unsigned rate, unsigned chs, unsigned bits, bool playable) {
        playable = playable && !valid && rate > 0 && rate <= INT_MAX && chs > 0 &&
                   chs * (bits / 8) <= maxFrameBytes;
        if (!playable) return refuse();
        format.rate = int(rate);
        format.chs = int(chs);
        format.bits = int(bits);
        known = true;
    }

    void setFrames(std::int64_t skip, std::int64_t most) {
        if (!known) return refuse();
        const std::int64_t count = std::max<std::int64_t>(0, held() - skip) / format.frameBytes();
        format.frames = int(std::min(count, most));
        format.dataStart = start + skip;
        valid = true;
    }

    void wavChunk() {
        if (is("fmt ")) {
            unsigned char b[fmtBytes];
            if (held() < fmtBytes || readAt(file, start, b, fmtBytes) < fmtBytes) return refuse();
            const unsigned tag = getLittle(b, 2), bits = getLittle(b + 14, 2);
            const bool playable =
                (tag == tagPcm && (bits == 16 || bits == 24)) || (tag == tagFloat && bits == 32);
            setFormat(getLittle(b + 4, 4), getLittle(b + 2, 2), bits, playable);
        } else if (is("data")) {
            format.loop = false;
            if (size == 0 && !chunksFollow()) size = pos = fileSize; // whoever wrote it was stopped
            setFrames(0, INT_MAX);
        } else if (is("smpl"))
            readLoops();
        else if (is("cue "))
            readCues();
        else if (is("LIST"))
            readLabels();
    }

    /// Whether the rest of the file is a row of chunks.
    bool chunksFollow() const {
        std::int64_t at = start;
        unsigned char head[chunkHead];
        while (at + chunkHead <= fileSize && readAt(file, at, head, chunkHead) == chunkHead) {
            for (int i = 0; i < 4; i++)
                if (head[i] < ' ' || head[i] > '~') return false;
            at += chunkHead + std::int64_t(getLittle(head + 4, 4));
            if (at % 2 && readAt(file, at, head, 1) == 1 && head[0] == 0) at++; // may be padded
        }
        return at == fileSize;
    }

    void readLoops() {
        unsigned char b[smplHead];
        if (held() < smplHead || readAt(file, start, b, smplHead) < smplHead) return;
        const std::int64_t told = getLittle(b + smplCountAt, 4);
        format.loop = told == 1;
        const std::int64_t count = std::min(told, (held() - smplHead) / smplLoopBytes);
        const std::int64_t last = start + smplHead + (count - 1) * smplLoopBytes + loopStartAt;
        if (count > 0 && readAt(file, last, b, 4) == 4)
            format.loopStart = int(std::min<unsigned>(getLittle(b, 4), INT_MAX));
    }

    struct Mark {
        unsigned id, frame;
        std::string name;
    };

    void readCues() {
        unsigned char b[cueBytes];
        if (readAt(file, start, b, 4) < 4) return;
        const std::int64_t count = std::min<std::int64_t>(getLittle(b, 4), (held() - 4) / cueBytes);
        for (std::int64_t i = 0; i < count && marks.size() < mostCues; i++) {
            if (readAt(file, start + 4 + i * cueBytes, b, cueBytes) < cueBytes) return;
            marks.push_back({getLittle(b, 4), getLittle(b + cueFrameAt, 4), ""});
        }
    }

    void readLabels() {
        unsigned char b[labelHead];
        const std::int64_t end = start + held();
        if (readAt(file, start, b, 4) < 4 || std::memcmp(b, "adtl", 4)) return;
        std::int64_t at = start + 4;
        for (int i = 0; i < mostCues && at + labelHead <= end && labels.size() < mostCues; i++) {
            if (readAt(file, at, b, labelHead) < labelHead) return;
            const std::int64_t bytes = getLittle(b + 4, 4);
            if (!std::memcmp(b, "labl", 4) && bytes > 4)
                labels.push_back({getLittle(b + 8, 4), 0,
                                  text(at + labelHead, std::min(bytes - 4, end - at - labelHead))});
            at += chunkHead + bytes + bytes % 2;
        }
    }

    void readMarks() {
        unsigned char b[7]; // id, frame, and the length of the name
        if (readAt(file, start, b, 2) < 2) return;
        const unsigned count = getBig(b, 2);
        std::int64_t at = start + 2;
        const std::int64_t end = start + held();
        for (unsigned i = 0; i < count && at + 7 <= end && marks.size() < mostCues; i++) {
            if (readAt(file, at, b, 7) < 7) return;
            marks.push_back({getBig(b, 2), getBig(b + 2, 4),
                             text(at + 7, std::min<std::int64_t>(b[6], end - at - 7))});
            at += 7 + b[6] + (b[6] + 1) % 2;
        }
    }

    /// Up to a zero, cut to a length that a view can show.
    std::string text(std::int64_t at, std::int64_t bytes) const {
        std::string read(std::size_t(std::clamp<std::int64_t>(bytes, 0, mostLabel)), 0);
        read.resize(std::size_t(readAt(file, at, read.data(), std::int64_t(read.size()))));
        return read.c_str();
    }

    void takeCues() {
        for (const Mark& mark : marks) {
            if (mark.frame >= unsigned(format.frames)) continue;
            AudioCue cue{int(mark.frame), mark.name};
            for (const Mark& label : labels)
                if (label.id == mark.id) cue.name = label.name;
            format.cues.push_back(std::move(cue));
        }
        std::ranges::stable_sort(format.cues, {}, &AudioCue::frame);
    }

    void aiffChunk() {
        if (is("COMM")) {
            unsigned char b[commBytes];
            if (held() < commBytes || readAt(file, start, b, commBytes) < commBytes)
                return refuse();
            const unsigned bits = getBig(b + 6, 2);
            toldFrames = std::max(0, int(std::int32_t(getBig(b + 2, 4))));
            setFormat(rateFromExtended(b + 8), getBig(b, 2), bits,
                      bits == 16 || bits == 24 || bits == 32);
        } else if (is("SSND"))
            setFrames(ssndHead, toldFrames);
        else if (is("MARK"))
            readMarks();
    }

    int toldFrames = 0; // by COMM
    std::vector<Mark> marks, labels;
};

void makeWavHeader(const AudioFormat& format, unsigned bytes, unsigned char* p) {
    putText(p, "RIFF");
    putLittle(p + 4, bytes + wavHeaderBytes - chunkHead, 4);
    putText(p + 8, "WAVEfmt ");
    putLittle(p + 16, fmtBytes, 4);
    putLittle(p + 20, format.bits == 32 ? tagFloat : tagPcm, 2);
    putLittle(p + 22, unsigned(format.chs), 2);
    putLittle(p + 24, unsigned(format.rate), 4);
    putLittle(p + 28, unsigned(format.rate) * unsigned(format.frameBytes()), 4);
    putLittle(p + 32, unsigned(format.frameBytes()), 2);
    putLittle(p + 34, unsigned(format.bits), 2);
    putText(p + 36, "data");
    putLittle(p + 40, bytes, 4);
}

void makeAiffHeader(const AudioFormat& format, unsigned bytes, unsigned char* p) {
    std::memset(p, 0, aiffHeaderBytes);
    putText(p, "FORM");
    putBig(p + 4, bytes + aiffHeaderBytes - chunkHead, 4);
    putText(p + 8, "AIFFCOMM");
    putBig(p + 16, commBytes, 4);
    putBig(p + 20, unsigned(format.chs), 2);
    putBig(p + 22, unsigned(format.frames), 4);
    putBig(p + 26, unsigned(format.bits), 2);
    rateToExtended(format.rate, p + 28);
    putText(p + 38, "SSND");
    putBig(p + 42, bytes + ssndHead, 4);
}

} // namespace

std::FILE* openAudioFile(const char* path) {
    const int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return nullptr;
    struct stat info {};
    std::FILE* file = fstat(fd, &info) == 0 && S_ISREG(info.st_mode) ? fdopen(fd, "rb") : nullptr;
    if (!file) ::close(fd);
    return file;
}

std::int64_t audioFileSize(std::FILE* file) {
    struct stat info {};
    return fstat(fileno(file), &info) == 0 ? std::int64_t(info.st_size) : 0;
}

std::int64_t readAt(std::FILE* file, std::int64_t offset, void* out, std::int64_t count) {
    std::int64_t done = 0;
    while (done < count) {
        const ssize_t got = pread(fileno(file), static_cast<char*>(out) + done,
                                  std::size_t(count - done), off_t(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        done += got;
    }
    return done;
}

std::int64_t writeAt(std::FILE* file, std::int64_t offset, const void* in, std::int64_t count) {
    std::int64_t done = 0;
    while (done < count) {
        const ssize_t put = pwrite(fileno(file), static_cast<const char*>(in) + done,
                                   std::size_t(count - done), off_t(offset + done));
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) break;
        done += put;
    }
    return done;
}

bool readAudioHeader(std::FILE* file, AudioFormat& format) {
    format = AudioFormat();
    const bool valid = ChunkWalk(file, format).run();
    format.loopStart = std::clamp(format.loopStart, 0, std::max(0, format.frames - 1));
    return valid;
}

int makeAudioHeader(const AudioFormat& format, unsigned char out[aiffHeaderBytes]) {
    const unsigned bytes = unsigned(format.frames) * unsigned(format.frameBytes());
    if (format.bigEndian) {
        makeAiffHeader(format, bytes, out);
        return aiffHeaderBytes;
    }
    makeWavHeader(format, bytes, out);
    return wavHeaderBytes;
}
