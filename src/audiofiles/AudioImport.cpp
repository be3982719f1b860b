#include "audiofiles/AudioImport.h"

#include "audiofiles/CSample.h"
#include "audiofiles/WavFile.h"
#include "base/Paths.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <memory>
#include <sndfile.h>
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

/// A file that the library reads, on its way into a sample.
class Conversion {
public:
    Conversion(SNDFILE* from, const SF_INFO& about, CSample& to, bool asTheyAre)
        : sound(from), info(about), target(to), exact(asTheyAre),
          values(std::size_t(pieceFrames) * std::size_t(info.channels)), integers(values.size()),
          bytes(std::size_t(pieceFrames) * std::size_t(to.frameBytes)) {}

    ImportResult run(ImportProgress& progress) {
        std::int64_t done = 0;
        for (int n = read(); n > 0; n = read()) {
            if (progress.cancelled) return ImportResult::cancelled;
            const int before = target.frames;
            write(n);
            if (target.frames != before + n)
                return fits(done + n, target.bits, target.chs) ? ImportResult::noRoom
                                                               : ImportResult::tooLong;
            done += n;
            progress.done = float(double(done) / double(std::max<std::int64_t>(1, info.frames)));
        }
        const bool whole = done > 0 && done >= info.frames && sf_error(sound) == SF_ERR_NO_ERROR;
        return whole ? ImportResult::good : ImportResult::unreadable;
    }

private:
    SNDFILE* sound;
    const SF_INFO& info;
    CSample& target;
    const bool exact; ///< values go over as they are
    std::vector<float> values;
    std::vector<int> integers; ///< their most significant bits count
    std::vector<unsigned char> bytes;

    bool inIntegers() const { return exact && target.bits != 32; }

    int read() {
        if (inIntegers()) return int(sf_readf_int(sound, integers.data(), pieceFrames));
        const int count = int(sf_readf_float(sound, values.data(), pieceFrames));
        if (info.channels > 2) mixDown(values, info.channels, count);
        return count;
    }

    void write(int count) {
        if (inIntegers())
            writeExact(integers.data(), count);
        else if (exact)
            writeExact(values.data(), count);
        else
            writeNarrowed(count);
    }

    /// The upper bytes of each value.
    void writeExact(const void* from, int count) {
        const std::size_t width = std::size_t(target.bits / 8), word = 4;
        const auto* in = static_cast<const unsigned char*>(from) + (word - width);
        for (std::size_t i = 0; i < std::size_t(count) * std::size_t(target.chs); i++)
            std::memcpy(&bytes[i * width], in + i * word, width);
        target.writeBytes(count, bytes.data());
    }

    void writeNarrowed(int count) {
        const std::size_t chs = std::size_t(target.chs);
        float left[pieceFrames], right[pieceFrames];
        for (std::size_t i = 0; i < std::size_t(count); i++) {
            left[i] = values[i * chs];
            right[i] = values[i * chs + chs - 1];
        }
        target.writeFrames(count, left, right);
    }
};

/// The widest format for the source that stays below 2 GB, 0 bits if none does.
int chooseBits(const SF_INFO& info, int chs) {
    const int natural = info.channels > 2 ? 32 : bitsOf(info.format);
    for (int bits : {32, 24, 16})
        if (bits <= natural && fits(info.frames, bits, chs)) return bits;
    return 0;
}

ImportResult convert(SNDFILE* sound, const SF_INFO& info, const CStr& path, const CStr& folder,
                     CStr& out, ImportProgress& progress) {
    const int chs = std::min(info.channels, 2), bits = chooseBits(info, chs);
    if (bits == 0) return ImportResult::tooLong;
    const CStr stem = changeFileExt(extractFileName(path), "");
    const std::unique_ptr<CSample> target(CSample::createSample(addSep(folder) + stem + ".wav", 0));
    if (!target) return ImportResult::noRoom;
    target->setFormat(info.samplerate, bits, chs);
    target->writeHeader();
    const bool exact = bits == (info.channels > 2 ? 32 : bitsOf(info.format));
    const ImportResult result = Conversion(sound, info, *target, exact).run(progress);
    if (result != ImportResult::good) return result; // and the file goes with its sample
    target->writeHeader();
    target->finalize();
    target->keep = true;
    out = target->filename;
    return result;
}

} // namespace

bool playsAsIs(const CStr& path) {
    const std::unique_ptr<std::FILE, FileCloser> file(openAudioFile(path.asChar()));
    AudioFormat format;
    return file && readAudioHeader(file.get(), format) && format.chs <= 2;
}

ImportResult importAudio(const CStr& path, const CStr& folder, CStr& out,
                         ImportProgress& progress) {
    out = "";
    if (playsAsIs(path)) {
        out = path;
        progress.done = 1.0f;
        return ImportResult::good;
    }
    const std::unique_ptr<std::FILE, FileCloser> file(openAudioFile(path.asChar()));
    SF_INFO info{};
    if (!file) return ImportResult::unreadable;
    const std::unique_ptr<SNDFILE, SoundCloser> sound(
        sf_open_fd(fileno(file.get()), SFM_READ, &info, SF_FALSE));
    if (!sound || info.channels < 1 || info.channels > maxChannels || info.samplerate < 1)
        return ImportResult::unreadable;
    return convert(sound.get(), info, path, folder, out, progress);
}

CAudioImport::~CAudioImport() {
    progress.cancelled = true;
    finish();
}

void CAudioImport::execute() {
    outcome = importAudio(path, folder, made, progress);
    ready.storeRelease(true);
}
