#include "audiofiles/CSample.h"
#include "audiofiles/CSampleReader.h"
#include "audiofiles/SampleRender.h"

#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

// A WAV or AIFF of any bytes: opened both ways, drawn, played forward and backward, across its
// ends.

namespace {

void play(CSample& sample) {
    alignas(float) static unsigned char scratch[sampleScratchBytes];
    float left[300], right[300];
    const int frames = sample.frames;
    for (ReadMode mode : {ReadMode::direct, ReadMode::live})
        for (int reverse : {0, 1})
            for (double pos : {-10.0, frames / 2.0, frames - 100.0}) {
                const SampleSpan span{pos, 1.3, reverse, int(sample.loopStart), frames};
                primeReader(sample, span, 300);
                render(sample, span, 300, left, right, scratch, mode);
                if (sample.reader) sample.reader->serve();
            }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const int fd = memfd_create("sample", 0);
    if (ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != ssize_t(size)) return -1;
    char path[32];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
    for (int streamed : {0, 1}) {
        CSample sample;
        sample.streamed = streamed;
        if (!sample.open(path)) continue;
        if (std::size_t(sample.frames) * std::size_t(sample.frameBytes) > size) std::abort();
        sample.peakfile();
        play(sample);
    }
    return 0;
}
