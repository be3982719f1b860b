#include "audiofiles/CAudioProcessor.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace {

constexpr int blockFrames = 1024;
constexpr int maxChannels = 2;

constexpr const char* texts[] = {"Normalize", "Delete",          "Trim",     "Beatslice",
                                 "Autoslice", "Fade In",         "Fade Out", "Reverse",
                                 "Cut",       "Convert to mono", "Flatten"};
constexpr int modeCount = int(std::size(texts));

bool editsFrames(int mode) {
    return mode >= 0 && mode < modeCount && mode != processBeatslice && mode != processAutoslice &&
           mode != processFlatten;
}

/// One edit under way.
class Edit {
public:
    Edit(CSample& from, CSample& to, int first, int end, int how)
        : source(from), target(to), start(first), stop(end), mode(how),
          bytes(std::size_t(blockFrames) * std::size_t(from.frameBytes)) {
        const bool sameFrames = source.bits == target.bits && source.chs == target.chs;
        swapped = source.bigEndian != target.bigEndian;
        canCopy = sameFrames && !(swapped && source.bits == 32);
        if (mode == processNormalize) gain = findGain();
    }

    bool run() {
        return pass(0, start, false) && (mode == processCut || pass(start, stop, true)) &&
               pass(stop, source.frames, false);
    }

private:
    CSample& source;
    CSample& target;
    const int start, stop, mode;
    float gain = 1.0f;
    bool canCopy = false; ///< frames have the same values in both files
    bool swapped = false; ///< but in the other byte order
    std::vector<unsigned char> bytes;
    float mixed[blockFrames * maxChannels] = {}, left[blockFrames] = {}, right[blockFrames] = {};

    float findGain() {
        float peak = 0.0f;
        for (int at = start; at < stop; at += blockFrames) {
            const int n = std::min(blockFrames, stop - at);
            source.readFrames(at, n, mixed);
            for (int i = 0; i < n * source.chs; i++) peak = std::max(peak, std::fabs(mixed[i]));
        }
        return peak > 0.0f ? 1.0f / peak : 1.0f;
    }

    bool isFade(bool inside) const {
        return inside && (mode == processFadeIn || mode == processFadeOut);
    }

    float factorAt(int frame, bool inside) const {
        if (!inside) return mode == processTrim ? 0.0f : 1.0f;
        const float part = float(double(frame - start) / (double(stop) - start));
        switch (mode) {
        case processNormalize:
            return gain;
        case processDelete:
            return 0.0f;
        case processFadeIn:
            return part;
        case processFadeOut:
            return 1.0f - part;
        default:
            return 1.0f;
        }
    }

    bool pass(int from, int to, bool inside) {
        for (int at = from; at < to; at += blockFrames) {
            const int n = std::min(blockFrames, to - at);
            const bool reverse = inside && mode == processReverse;
            const int first = reverse ? start + (stop - at) - n : at;
            const bool unchanged = !isFade(inside) && factorAt(at, inside) == 1.0f;
            if (!(unchanged && canCopy ? copy(first, n, reverse) : convert(at, first, n, inside)))
                return false;
        }
        return true;
    }

    bool copy(int first, int count, bool reverse) {
        const std::size_t width = std::size_t(source.bits / 8),
                          frame = std::size_t(source.frameBytes);
        unsigned char* const end = bytes.data() + std::size_t(count) * frame;
        if (source.readBytes(first, count, bytes.data()) < count) return false;
        if (reverse) { // all bytes, then those of each frame back again
            std::reverse(bytes.data(), end);
            for (unsigned char* p = bytes.data(); p < end; p += frame) std::reverse(p, p + frame);
        }
        for (unsigned char* p = bytes.data(); p < end && swapped; p += width)
            std::reverse(p, p + width);
        return target.writeBytes(count, bytes.data()) == count;
    }

    bool convert(int at, int first, int count, bool inside) {
        const int before = target.frames, chs = source.chs;
        const bool reverse = inside && mode == processReverse;
        source.readFrames(first, count, mixed);
        for (int i = 0; i < count; i++) {
            const float* frame = mixed + std::ptrdiff_t(reverse ? count - 1 - i : i) * chs;
            const float factor = factorAt(at + i, inside);
            left[i] = frame[0] * factor;
            right[i] = frame[chs - 1] * factor;
        }
        target.writeFrames(count, left, right);
        return target.frames == before + count;
    }
};

} // namespace

bool processSample(CSample* source, CSample* target, int from, int to, int mode) {
    if (!source->valid || source->chs > maxChannels || !editsFrames(mode)) return false;
    const int frames = source->frames;
    const int start = std::clamp(std::min(from, to), 0, frames);
    const int stop = std::clamp(std::max(from, to), 0, frames);
    return std::make_unique<Edit>(*source, *target, start, stop, mode)->run();
}

CStr CAudioProcessor::getText(int mode) {
    return mode >= 0 && mode < modeCount ? texts[mode] : "";
}

CSample* CAudioProcessor::createSample(const CStr& like, int rate, int bits, int chs) {
    bool inTemp = false;
    const CStr name = newName(like, inTemp);
    if (name.empty()) return nullptr;
    CSample* sample = CSample::createSample(name, inTemp);
    if (!sample) return nullptr;
    sample->setFormat(rate, bits, chs);
    sample->writeHeader();
    return sample;
}

CSample* CAudioProcessor::cloneSampleType(CSample* like) {
    return createSample(like->filename, asRound(double(like->rate)), like->bits, like->chs);
}

CSample* CAudioProcessor::process(int how, CSample* source, int from, int to) {
    if (!editsFrames(how)) return nullptr;
    CSample* made = cloneSampleType(source);
    if (!made) return nullptr;
    if (how == processMono) made->setFormat(asRound(double(source->rate)), source->bits, 1);
    if (!processSample(source, made, from, to, how)) {
        delete made; // and its file
        return nullptr;
    }
    made->writeHeader();
    made->finalize();
    return made;
}
