#include "panels/sampler/ProgramSettings.h"

#include "common/fx/CFX.h"
#include "engine/EffectSettings.h"
#include "instruments/CSynthProg.h"
#include "instruments/SoundSettings.h"

namespace {

void add(std::vector<SettingValue>& all, Settings table, CObject* object) {
    for (const Setting& s : table) all.push_back({&s, s.of(object)});
}

void addSound(std::vector<SettingValue>& all, CSound* sound) {
    constexpr int fixedEnvelopes = 2; // which lead to the level and the filter alone
    add(all, settingsOf(*sound), sound);
    const Settings slots = slotSettings(*sound);
    for (int i = 0; i < envelopeCount; i++) {
        add(all, envelopeSettings(), sound->envelope[i].get());
        if (i >= fixedEnvelopes) add(all, slots, sound->envelope[i].get());
    }
    for (const auto& lfo : sound->lfo) {
        add(all, lfoSettings(), lfo.get());
        add(all, slots, lfo.get());
    }
    add(all, slots, sound->vel.get());
    for (const auto& fx : sound->fx) add(all, settingsOf(*fx), fx.get());
}

} // namespace

std::vector<SettingValue> settingsOfProgram(CSynthProg& prog) {
    std::vector<SettingValue> all;
    prog.eachSound([&](CSound* sound) { addSound(all, sound); });
    for (const auto& fx : prog.fx) add(all, settingsOf(*fx), fx.get());
    return all;
}
