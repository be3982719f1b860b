#include "instruments/ArpSteps.h"

#include "base/Random.h"
#include "instruments/CArpVoice.h"

#include <algorithm>
#include <memory>

namespace {

/// A program with these settings and keys, and a voice that begins to play it.
struct Trial {
    Trial(const CArpProg& like, const std::vector<CArpKey>& keys) {
        prog.copySettings(like);
        for (const CArpKey& k : keys) prog.addKey(k.key + CArpKey::middle, k.velocity);
        voice.prog = &prog;
        voice.swing = prog.getSwing();
        prog.buildPattern(&voice, chance);
    }

    CArpProg prog;
    CArpVoice voice;
    Random chance;
};

} // namespace

std::vector<ArpStep> arpSteps(const CArpProg& prog, const std::vector<CArpKey>& keys, int count) {
    const auto trial = std::make_unique<Trial>(prog, keys);
    CArpVoice& v = trial->voice;
    std::vector<ArpStep> steps;
    for (int i = 0; i < count; i++, v.advance()) {
        ArpStep step{v.nextTick, v.gateTicks(1.0), {}};
        int first = 0, last = -1;
        if (v.takeStep(trial->chance, first, last))
            for (int k = first; k <= last; k++) {
                CArpKey note = v.pattern[k];
                const int key = note.key + v.octave;
                if (key + CArpKey::middle < 0 || key + CArpKey::middle > 127) continue;
                note.key = static_cast<signed char>(key);
                step.notes.push_back(note);
            }
        steps.push_back(step);
    }
    return steps;
}

int arpPeriod(const CArpProg& prog, const std::vector<CArpKey>& keys) {
    const auto trial = std::make_unique<Trial>(prog, keys);
    const int once = prog.mode == arpChord ? 1 : std::max(1, trial->voice.count);
    const int octaves = std::max(1, int(prog.octaves));
    return once * (prog.transposeMode ? std::max(2, 2 * octaves - 2) : octaves);
}
