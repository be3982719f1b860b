#include "base/Messages.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "engine/MidiBytes.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/CWavSound.h"

#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

// A SoundFont of any bytes: imported, its sounds played. The clips may hold no more frames than
// twice the file.

namespace {

constexpr int blockFrames = 256;
constexpr int mostPlayed = 8; ///< programs

CQV* fuzzHost() {
    static CQV* host = [] {
        messageHooks().showMsg = [](CWin*, const CStr&, const CStr&, int) { return 0; };
        qv = new CQV;
        qv->settingsEnabled = false;
        qv->setFrames(blockFrames);
        return qv;
    }();
    return host;
}

void play(CSampler& sampler) {
    const GraphHold hold(sampler.host);
    sampler.createChannels();
    sampler.createBuffers(blockFrames);
    for (int i = 0; i < sampler.progs.getCount() && i < mostPlayed; i++) {
        sampler.setProg(i);
        for (int note : {0, 60, 127}) {
            CMIDIBytes on;
            on.data = asData(midiNoteOn, note, 100);
            sampler.doMapping(&on);
        }
        sampler.prepare(blockFrames);
        sampler.render(blockFrames, 0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const int fd = memfd_create("font", 0);
    if (ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != ssize_t(size)) return -1;
    char path[32];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
    CSampler sampler(fuzzHost());
    const bool good = sampler.openSF2(path, nullptr);
    if (good && sampler.progs.empty()) std::abort();
    std::size_t bytes = 0;
    for (const CSampleClip* clip : each<CSampleClip>(sampler.clips)) {
        bytes += std::size_t(clip->frames) * std::size_t(clip->frameBytes);
        if (clip->start > clip->end || clip->end > clip->frames) std::abort();
    }
    if (bytes > 2 * size) std::abort();
    play(sampler);
    return 0;
}
