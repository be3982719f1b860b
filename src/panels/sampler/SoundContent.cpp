#include "panels/sampler/SoundContent.h"

#include "base/Numbers.h"
#include "common/fx/CFX.h"
#include "engine/CQV.h"
#include "engine/EffectSettings.h"
#include "engine/ValueDoor.h"
#include "instruments/COSCSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/CWavSound.h"
#include "instruments/SoundParams.h"
#include "instruments/SoundSettings.h"
#include "panels/PageRow.h"
#include "panels/sampler/EnvelopeView.h"
#include "panels/sampler/LfoView.h"
#include "panels/sampler/OperatorView.h"
#include "panels/sampler/SampleBox.h"
#include "ui/SettingPanel.h"
#include "ui/Workspace.h"

namespace {

constexpr int gap = 8, modulatorWidth = 62;

/// In the order of the buttons; behind them the velocity, and the controllers, which have none.
constexpr int firstLfo = envelopeCount, velocity = firstLfo + lfoCount, controllers = velocity + 1;
constexpr int fixedEnvelopes = 2; ///< which lead to the level and the filter alone

CMod* modulatorOf(const CSound* sound, int number) {
    if (number < firstLfo) return sound->envelope[number].get();
    return number < velocity ? static_cast<CMod*>(sound->lfo[number - firstLfo].get())
                             : sound->vel.get();
}

std::vector<CStr> modulatorTitles() {
    std::vector<CStr> all = {"Amp", "Filter"};
    for (int i = fixedEnvelopes; i < envelopeCount; i++) all.push_back("Env " + asStr(i + 1));
    for (int i = 0; i < lfoCount; i++) all.push_back("LFO " + asStr(i + 1));
    all.push_back("Velocity");
    all.push_back("MIDI");
    return all;
}

/// The same of each sound that is set along.
template <class F>
std::function<std::vector<CObject*>()> ofOthers(const SoundContent::Subject& subject, F&& of) {
    return [along = subject.along, of] {
        std::vector<CObject*> all;
        if (along)
            for (CSound* s : along()) all.push_back(of(s));
        return all;
    };
}

} // namespace

SettingPanel* SoundContent::addSettings(CGroup* in) {
    settings = new SettingPanel(win, "settings", workspace);
    in->addControl(settings);
    return settings;
}

void SoundContent::buildSound(CGroup* in, const Subject& subject) {
    CSound* sound = subject.sound;
    std::vector<SettingPanel::Section> sections;
    const auto others = ofOthers(subject, [](CSound* s) -> CObject* { return s; });
    SettingPanel::Section own{settingsOf(*sound), sound, -1, "", others, subject.alive};
    if (subject.param) {
        own.param = subject.param;
        own.paramComp = [sound](const Setting& s) -> CComp* {
            return sound->target(targetOfSetting(s)) ? sound->layer->prog->owner : nullptr;
        };
        own.modulation = [sound](const Setting& s) { return modulationOf(*sound, s); };
    }
    sections.push_back(own);
    if (!subject.more.empty())
        sections.push_back({subject.more, sound, -1, "", others, subject.alive});
    if (sound->type == typeWavSound)
        if (CSampleClip* clip = static_cast<CWavSound*>(sound)->clips[0])
            sections.push_back({clipSettings(*sound), clip, -1, "", {}, subject.alive});
    addPicture(in, subject);
    addSettings(in)->show(sections);
}

void SoundContent::addPicture(CGroup* in, const Subject& subject) {
    if (subject.sound->type == typeOscSound) {
        operators =
            new OperatorView(win, static_cast<const COSCSound*>(subject.sound), subject.alive);
        return in->addControl(operators);
    }
    CSampleClip* clip = static_cast<CWavSound*>(subject.sound)->clips[0];
    if (!clip) return;
    sample = new SampleBox(win, workspace, clip, subject.alive);
    in->addControl(sample);
}

void SoundContent::buildModulators(CGroup* in, const Subject& subject) {
    modulators = new PageRow(win, "modulators", modulatorTitles(), modulatorWidth);
    modulators->turn(shownModulator);
    modulators->onTurned = [this] {
        shownModulator = modulators->page();
        if (onTurned) onTurned();
    };
    in->addControl(modulators);
    if (shownModulator == controllers) {
        const auto sounds = ofOthers(subject, [](CSound* s) -> CObject* { return s; });
        addSettings(in)->show(
            {{controllerSettings(*subject.sound), subject.sound, -1, "", sounds, subject.alive}});
        return;
    }
    const int number = shownModulator;
    CMod* mod = modulatorOf(subject.sound, number);
    const auto others =
        ofOthers(subject, [number](CSound* s) -> CObject* { return modulatorOf(s, number); });
    std::vector<SettingPanel::Section> sections;
    if (number < firstLfo) {
        envelope = new EnvelopeView(win, workspace.host()->values.get());
        envelope->show(static_cast<CEnv*>(mod), subject.alive, others);
        in->addControl(envelope);
        sections.push_back({envelopeSettings(), mod, -1, "", others, subject.alive});
    } else if (number < velocity) {
        lfo = new LfoView(
            win, workspace.host()->values.get(), static_cast<CLFO*>(mod), subject.alive, others,
            [host = workspace.host()] { return double(host->tempoNow); },
            [sound = subject.sound] { return sound->peakL > 0.0f || sound->peakR > 0.0f; });
        in->addControl(lfo);
        sections.push_back({lfoSettings(), mod, -1, "", others, subject.alive});
    }
    if (number >= fixedEnvelopes)
        sections.push_back({slotSettings(*subject.sound), mod, -1, "", others, subject.alive});
    addSettings(in)->show(sections);
}

void SoundContent::buildEffects(CGroup* in, const Subject& subject) {
    CSound* sound = subject.sound;
    std::vector<SettingPanel::Section> sections;
    for (int i = 0; i < int(std::size(sound->fx)); i++) {
        CFX* fx = sound->fx[i].get();
        const auto others =
            ofOthers(subject, [i](CSound* s) -> CObject* { return s->fx[i].get(); });
        sections.push_back({settingsOf(*fx), fx, -1, fx->id, others, subject.alive});
    }
    for (const auto& fx : sound->layer->prog->fx)
        sections.push_back({settingsOf(*fx), fx.get(), -1, "Program " + fx->id, {}, subject.alive});
    addSettings(in)->show(sections);
}

void SoundContent::clear() {
    modulators = nullptr;
    envelope = nullptr;
    lfo = nullptr;
    operators = nullptr;
    sample = nullptr;
    settings = nullptr;
}

void SoundContent::arrange(int wide) {
    int y = 0;
    if (modulators) {
        modulators->fit(wide);
        y = modulators->height;
    }
    const auto put = [&](CCtrl* picture, int high) {
        picture->setBounds(gap, y, wide - 2 * gap, high);
        y += high;
    };
    if (operators || sample) y += gap;
    if (envelope) put(envelope, EnvelopeView::usualHeight);
    if (lfo) put(lfo, LfoView::usualHeight);
    if (operators) put(operators, OperatorView::usualHeight);
    if (sample) put(sample, sample->height), sample->resized();
    if (!settings) return;
    settings->setBounds(0, y, settings->width, settings->height);
    settings->fit(wide);
}

void SoundContent::refresh() {
    if (settings) settings->refresh();
    if (envelope) envelope->refresh();
    if (lfo) lfo->refresh();
    if (operators) operators->refresh();
    if (sample) sample->refresh();
}
