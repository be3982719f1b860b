#include "audiofiles/AudioImport.h"

#include "audiofiles/CSample.h"
#include "audiofiles/RateChange.h"
#include "audiofiles/SincReader.h"
#include "audiofiles/WavFile.h"
#include "base/CStream.h"
#include "base/Numbers.h"
#include "base/Paths.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <memory>
#include <sndfile.h>
#include <unistd.h>
#include <vector>

static_assert(std::endian::native == std::endian::little, "frames are copied to WAV as they lie");

namespace {

constexpr int maxChannels = 64; // of a source
constexpr int pieceFrames = 4096;
constexpr float sideLevel = 0.70710678f; // of the middle and of the speakers behind, mixed down

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
struct SoundCloser {
    void operator()(SNDFILE* sound) const { sf_close(sound); }
};

/// Bits that hold the values of a coding as they are.
int bitsOf(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_PCM_16:
    case SF_FORMAT_ULAW:
    case SF_FORMAT_ALAW:
    case SF_FORMAT_IMA_ADPCM:
    case SF_FORMAT_MS_ADPCM:
    case SF_FORMAT_GSM610:
    case SF_FORMAT_ALAC_16:
        return 16;
    case SF_FORMAT_PCM_24:
    case SF_FORMAT_ALAC_20:
    case SF_FORMAT_ALAC_24:
        return 24;
    default:
        return 32;
    }
}

bool fits(std::int64_t frames, int bits, int chs) {
    return frames <= (INT_MAX - wavHeaderBytes) / (chs * bits / 8);
}

/// Interleaved frames of more than two channels to two, in place, by the usual orders of speakers:
/// both sides, a middle, of six or more the bass effects, then those behind, left and right.
void mixDown(std::vector<float>& values, int chs, int count) {
    const bool hasMiddle = chs != 4, hasLow = chs >= 6;
    const float* in = values.data();
    float* out = values.data();
    for (int i = 0; i < count; i++, in += chs, out += 2) {
        const float middle = hasMiddle ? sideLevel * in[2] : 0.0f;
        float sides[2] = {in[0] + middle, in[1] + middle};
        for (int c = 2 + hasMiddle + hasLow, side = 0; c < chs; c++, side ^= 1)
            sides[side] += sideLevel * in[c];
        std::copy_n(sides, 2, out);
    }
}

/// A new file and the channels of the source that go into it.
struct Output {
    std::unique_ptr<CSample> file;      ///< deletes itself until it is kept
    int channel = 0;                    ///< first of `file->chs`
    std::unique_ptr<RateChange> change; ///< null where the rate stays
};

/// A file that the library reads, on its way into samples.
class Conversion {
public:
    Conversion(SNDFILE* from, const SF_INFO& about, std::vector<Output>& to, bool asTheyAre)
        : sound(from), info(about), outputs(to), bits(to[0].file->bits), exact(asTheyAre),
          mixes(info.channels > 2 && to.size() == 1), channels(mixes ? 2 : info.channels),
          values(std::size_t(pieceFrames) * std::size_t(info.channels)), integers(values.size()),
          bytes(std::size_t(pieceFrames) * std::size_t(to[0].file->frameBytes)) {}

    ImportResult run(ImportProgress& progress) {
        std::int64_t done = 0;
        for (int n = read(); n > 0; n = read()) {
            if (progress.cancelled) return ImportResult::cancelled;
            for (Output& out : outputs)
                if (!write(out, n)) return full(out, done + n);
            done += n;
            progress.done = float(double(done) / double(std::max<std::int64_t>(1, info.frames)));
        }
        const bool whole = done > 0 && done >= info.frames && sf_error(sound) == SF_ERR_NO_ERROR;
        if (!whole) return ImportResult::unreadable;
        for (Output& out : outputs) {
            if (out.change) out.change->end();
            if (out.change && !writeChanged(out)) return full(out, done);
        }
        return ImportResult::good;
    }

private:
    SNDFILE* sound;
    const SF_INFO& info;
    std::vector<Output>& outputs;
    const int bits;
    const bool exact; ///< values go over as they are
    const bool mixes;
    const int channels; ///< of `values`, once they are read
    std::vector<float> values;
    std::vector<int> integers; ///< their most significant bits count
    std::vector<unsigned char> bytes;
    float left[pieceFrames], right[pieceFrames];

    bool inIntegers() const { return exact && bits != 32; }

    static ImportResult full(const Output& out, std::int64_t frames) {
        const double step = out.change ? out.change->step : 1.0;
        const auto needed = std::int64_t(double(frames) / step);
        return fits(needed, out.file->bits, out.file->chs) ? ImportResult::noRoom
                                                           : ImportResult::tooLong;
    }

    int read() {
        if (inIntegers()) return int(sf_readf_int(sound, integers.data(), pieceFrames));
        const int count = int(sf_readf_float(sound, values.data(), pieceFrames));
        if (mixes) mixDown(values, info.channels, count);
        return count;
    }

    bool write(const Output& out, int count) {
        if (inIntegers()) return writeExact(out, integers.data(), count);
        if (exact) return writeExact(out, values.data(), count);
        const std::size_t first = std::size_t(out.channel);
        const std::size_t last = first + std::size_t(out.file->chs) - 1;
        for (std::size_t i = 0, at = 0; i < std::size_t(count); i++, at += std::size_t(channels)) {
            left[i] = values[at + first];
            right[i] = values[at + last];
        }
        if (!out.change) return writeSides(out, count);
        out.change->put(left, right, count);
        return writeChanged(out);
    }

    bool writeChanged(const Output& out) {
        for (int n = 1; n > 0;) {
            n = out.change->take(left, right, pieceFrames);
            if (n > 0 && !writeSides(out, n)) return false;
        }
        return true;
    }

    /// The upper bytes of each value.
    bool writeExact(const Output& out, const void* from, int count) {
        const std::size_t width = std::size_t(bits / 8), word = 4;
        const std::size_t chs = std::size_t(out.file->chs);
        const auto* in = static_cast<const unsigned char*>(from) + (word - width);
        in += std::size_t(out.channel) * word;
        unsigned char* to = bytes.data();
        for (int i = 0; i < count; i++, in += std::size_t(channels) * word)
            for (std::size_t c = 0; c < chs; c++, to += width)
                std::memcpy(to, in + c * word, width);
        return out.file->writeBytes(count, bytes.data()) == count;
    }

    /// Floats keep what lies above full level, which narrower frames cannot.
    bool writeSides(const Output& out, int count) {
        CSample& file = *out.file;
        if (bits != 32) {
            const int before = file.frames;
            file.writeFrames(count, left, right);
            return file.frames == before + count;
        }
        unsigned char* to = bytes.data();
        for (int i = 0; i < count; i++)
            for (const float* side : {left, right}) {
                if (side == right && file.chs == 1) continue;
                std::memcpy(to, side + i, sizeof(float));
                to += sizeof(float);
            }
        return file.writeBytes(count, bytes.data()) == count;
    }
};

/// How a source becomes files.
struct Plan {
    int chs = 1; ///< of each file
    int files = 1;
    int bits = 0; ///< 0 when none is narrow enough
    bool exact = false;
    int rate = 0;
    double step = 1.0; ///< source frames per frame of a file
};

bool changesRate(int from, int to) {
    constexpr int mostGrowth = 64;
    return to > 0 && from != to && from <= double(to) * maxSincStep &&
           to <= double(from) * mostGrowth;
}

/// The widest frames that the source asks for and that stay below 2 GB.
Plan planOf(const SF_INFO& info, const ImportWish& wish) {
    Plan plan;
    const bool many = info.channels > 2;
    plan.files = many && wish.splits ? info.channels : 1;
    plan.chs = plan.files > 1 ? 1 : std::min(info.channels, 2);
    const bool changed = changesRate(info.samplerate, wish.rate);
    plan.rate = changed ? wish.rate : info.samplerate;
    plan.step = double(info.samplerate) / plan.rate;
    const bool computed = changed || (many && plan.files == 1);
    const int natural = computed ? 32 : bitsOf(info.format);
    const double frames = double(info.frames) / plan.step;
    for (int bits : {16, 24, 32})
        if (bits <= natural && frames < INT_MAX && fits(std::int64_t(frames), bits, plan.chs))
            plan.bits = bits;
    plan.exact = !computed && plan.bits == natural;
    return plan;
}

bool makeOutputs(const Plan& plan, const ImportWish& wish, std::vector<Output>& outputs) {
    const CStr stem = addSep(wish.folder) + changeFileExt(extractFileName(wish.path), "");
    for (int i = 0; i < plan.files; i++) {
        const CStr number = plan.files > 1 ? " " + asStr(i + 1) : CStr();
        Output out;
        out.file.reset(CSample::createSample(stem + number + ".wav", 0));
        if (!out.file) return false;
        out.file->setFormat(plan.rate, static_cast<unsigned char>(plan.bits),
                            static_cast<unsigned char>(plan.chs));
        out.file->writeHeader();
        out.channel = i;
        if (plan.step != 1.0) out.change = std::make_unique<RateChange>(plan.step);
        outputs.push_back(std::move(out));
    }
    return true;
}

ImportResult convert(SNDFILE* sound, const SF_INFO& info, const ImportWish& wish,
                     std::vector<CStr>& made, ImportProgress& progress) {
    const Plan plan = planOf(info, wish);
    if (plan.bits == 0) return ImportResult::tooLong;
    std::vector<Output> outputs;
    if (!makeOutputs(plan, wish, outputs)) return ImportResult::noRoom;
    const auto conversion = std::make_unique<Conversion>(sound, info, outputs, plan.exact);
    const ImportResult result = conversion->run(progress);
    if (result != ImportResult::good) return result; // and the files go with their samples
    for (Output& out : outputs) {
        out.file->writeHeader();
        out.file->finalize();
        out.file->keep = true;
        made.push_back(out.file->filename);
    }
    return result;
}

ImportResult copyWhole(const ImportWish& wish, std::vector<CStr>& made, ImportProgress& progress) {
    constexpr int blockBytes = 1 << 18;
    const CStr stem = changeFileExt(extractFileName(wish.path), "");
    CFileStream in(wish.path, 0);
    if (!in.isOpen()) return ImportResult::unreadable;
    const CStr name = makeUniqueFile(stem, extractFileExt(wish.path), wish.folder);
    if (name.empty()) return ImportResult::noRoom;
    CFileStream out(name, 1);
    std::vector<char> block(blockBytes);
    ImportResult result = out.isOpen() ? ImportResult::good : ImportResult::noRoom;
    while (result == ImportResult::good && in.left() > 0) {
        const int n = in.read(block.data(), blockBytes);
        if (progress.cancelled)
            result = ImportResult::cancelled;
        else if (n < 1)
            result = ImportResult::unreadable;
        else if (out.write(block.data(), n) < n)
            result = ImportResult::noRoom;
        progress.done = float(double(in.getPos()) / double(in.getSize()));
    }
    if (result == ImportResult::good && !out.flush()) result = ImportResult::noRoom;
    if (result == ImportResult::good)
        made.push_back(name);
    else
        ::unlink(name.asChar());
    return result;
}

/// True for what `CSample` plays as it is: WAV or AIFF of its formats, of one or two channels.
bool headerOf(const CStr& path, AudioFormat& format) {
    const std::unique_ptr<std::FILE, FileCloser> file(openAudioFile(path.asChar()));
    return file && readAudioHeader(file.get(), format) && format.chs <= 2;
}

using Sound = std::unique_ptr<SNDFILE, SoundCloser>;

/// Null, unless the library reads the file; it reads from `file`, which stays the caller's.
Sound openSound(std::FILE* file, SF_INFO& info) {
    Sound sound(file ? sf_open_fd(fileno(file), SFM_READ, &info, SF_FALSE) : nullptr);
    const bool usable = info.channels >= 1 && info.channels <= maxChannels && info.samplerate >= 1;
    return usable ? std::move(sound) : nullptr;
}

} // namespace

AudioLength audioLength(const CStr& path) {
    AudioFormat format;
    if (headerOf(path, format)) return {double(format.frames) / format.rate, format.chs};
    const std::unique_ptr<std::FILE, FileCloser> file(openAudioFile(path.asChar()));
    SF_INFO info{};
    const Sound sound = openSound(file.get(), info);
    return sound ? AudioLength{double(info.frames) / info.samplerate, info.channels}
                 : AudioLength();
}

ImportResult importAudio(const ImportWish& wish, std::vector<CStr>& out, ImportProgress& progress) {
    out.clear();
    AudioFormat format;
    const bool plays = headerOf(wish.path, format);
    if (plays && !changesRate(format.rate, wish.rate)) {
        const bool there = samePlace(extractFilePath(wish.path), addSep(wish.folder));
        if (wish.copies && !there) return copyWhole(wish, out, progress);
        out.push_back(wish.path);
        progress.done = 1.0f;
        return ImportResult::good;
    }
    const std::unique_ptr<std::FILE, FileCloser> file(openAudioFile(wish.path.asChar()));
    SF_INFO info{};
    const Sound sound = openSound(file.get(), info);
    if (!sound) return ImportResult::unreadable;
    return convert(sound.get(), info, wish, out, progress);
}

CAudioImport::~CAudioImport() {
    progress.cancelled = true;
    finish();
}

void CAudioImport::execute() {
    outcome = importAudio(wish, made, progress);
    ready.storeRelease(true);
}
