#include "panels/sampler/CSamplerWin.h"

#include "base/Numbers.h"
#include "common/fx/CFX.h"
#include "engine/CQV.h"
#include "engine/EffectSettings.h"
#include "gui/controls/CPopup.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/CWavSound.h"
#include "instruments/FactoryPrograms.h"
#include "instruments/SamplerEdits.h"
#include "instruments/SoundSettings.h"
#include "panels/PageRow.h"
#include "panels/PanelBody.h"
#include "panels/sampler/EnvelopeView.h"
#include "panels/sampler/SoundList.h"
#include "panels/sampler/ZoneView.h"
#include "project/PresetFiles.h"
#include "ui/SettingPanel.h"
#include "ui/Workspace.h"

namespace {

constexpr int gap = 8, listWidth = 200;
constexpr int pageWidth = 92, modulatorWidth = 62;
const CRect usualPlace = asRect(100, 80, 100 + 960, 80 + 600);

/// In the order of the buttons; behind them the velocity.
constexpr int firstLfo = envelopeCount, velocity = firstLfo + lfoCount;
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
    return all;
}

} // namespace

CSamplerWin::CSamplerWin(Workspace& space, CSampler& edited)
    : PanelWin(space, edited, usualPlace, deeds(edited)), sampler(edited),
      list(new SoundList(this, space, edited)),
      pages(new PageRow(this, "pages", {"Sound", "Modulators", "Effects", "Keys"}, pageWidth)) {
    constexpr int below = ProgramBar::usualHeight;
    list->setBounds(0, below, listWidth, 1);
    list->setAlign(alignHeight, 0, 0);
    list->onChosen = [this] { follow(); };
    addControl(list);
    pages->setBounds(listWidth, below, 1, PageRow::usualHeight);
    pages->setAlign(alignWidth, 0, 0);
    pages->onTurned = [this] { follow(); };
    addControl(pages);
    const int from = below + PageRow::usualHeight;
    body->setBounds(listWidth, from, width - listWidth, height - from);
    follow();
}

ProgramBar::Deeds CSamplerWin::deeds(CSampler& of) {
    ProgramBar::Deeds can;
    can.addKinds = [this](CPopup* popup) { addPrograms(popup); };
    can.open = [&of](const CStr& path) { openPrograms(&of, path); };
    can.save = [&of](const CStr& path) { saveProgram(&of, path); };
    can.extension = ".qvs|.sf2";
    return can;
}

void CSamplerWin::addPrograms(CPopup* popup) {
    popup->add("One synthesizer sound",
               new _COnChange<CSamplerWin>(this, &CSamplerWin::defaultChosen));
    popup->addSeparator();
    for (int i = 0; i < factoryCount; i++)
        popup->add(factoryName(i), new _COnChange<CSamplerWin>(this, &CSamplerWin::factoryChosen))
            ->tag = i;
}

void CSamplerWin::defaultChosen(CObject*) {
    addDefaultProgram(&sampler);
    follow();
}

void CSamplerWin::factoryChosen(CObject* sender) {
    addFactoryProgram(&sampler, static_cast<CMenuItem*>(static_cast<CCtrl*>(sender))->tag);
    follow();
}

std::vector<const void*> CSamplerWin::shape() const {
    CSynthProg* prog = sampler.getProg();
    const CSound* sound = list->sound();
    std::vector<const void*> all = {prog, sound};
    if (sound && sound->type == typeWavSound)
        all.push_back(static_cast<const CWavSound*>(sound)->clips[0].load());
    if (pages->page() == pageKeys && prog)
        prog->eachSound([&](const CSound* s) { all.push_back(s); });
    all.push_back(pages + pages->page());
    all.push_back(this + shownModulator);
    return all;
}

bool CSamplerWin::alive(const CSound* wanted) const {
    bool found = false;
    if (CSynthProg* prog = sampler.getProg())
        prog->eachSound([&](const CSound* s) { found = found || s == wanted; });
    return found;
}

std::vector<CSound*> CSamplerWin::along() const {
    std::vector<CSound*> all;
    const CLayer* layer = list->layer();
    const CSound* current = list->sound();
    if (!layer || !layer->editAll || !current) return all;
    for (CSound* s : each<CSound>(layer->sounds))
        if (s != current && s->type == current->type) all.push_back(s);
    return all;
}

void CSamplerWin::build() {
    modulators = nullptr;
    envelope = nullptr;
    zones = nullptr;
    settings = new SettingPanel(this, "settings", sampler.host->values.get());
    CSound* sound = list->sound();
    if (pages->page() == pageKeys)
        buildKeys();
    else if (sound && pages->page() == pageSound)
        buildSound(sound);
    else if (sound && pages->page() == pageModulators)
        buildModulators(sound);
    else if (sound)
        buildEffects(sound);
    body->inner->addControl(settings);
}

void CSamplerWin::buildSound(CSound* sound) {
    const auto lives = [this, sound] { return alive(sound); };
    std::vector<SettingPanel::Section> sections;
    const auto others = [this] {
        const std::vector<CSound*> sounds = along();
        return std::vector<CObject*>(sounds.begin(), sounds.end());
    };
    sections.push_back({settingsOf(*sound), sound, -1, "", others, lives});
    if (sound->type == typeWavSound)
        if (CSampleClip* clip = static_cast<CWavSound*>(sound)->clips[0])
            sections.push_back({clipSettings(), clip, -1, "", {}, lives});
    settings->show(sections);
}

CMod* CSamplerWin::modulator(CSound* sound) const {
    return modulatorOf(sound, shownModulator);
}

void CSamplerWin::buildModulators(CSound* sound) {
    modulators = new PageRow(this, "modulators", modulatorTitles(), modulatorWidth);
    modulators->turn(shownModulator);
    modulators->onTurned = [this] {
        shownModulator = modulators->page();
        follow();
    };
    body->inner->addControl(modulators);
    const int number = shownModulator;
    CMod* mod = modulator(sound);
    const auto lives = [this, sound] { return alive(sound); };
    const auto others = [this, number] {
        std::vector<CObject*> all;
        for (CSound* s : along()) all.push_back(modulatorOf(s, number));
        return all;
    };
    std::vector<SettingPanel::Section> sections;
    if (number < firstLfo) {
        envelope = new EnvelopeView(this, sampler.host->values.get());
        envelope->show(static_cast<CEnv*>(mod), lives, others);
        body->inner->addControl(envelope);
        sections.push_back({envelopeSettings(), mod, -1, "", others, lives});
    } else if (number < velocity) {
        sections.push_back({lfoSettings(), mod, -1, "", others, lives});
    }
    if (number >= fixedEnvelopes)
        sections.push_back({slotSettings(*sound), mod, -1, "", others, lives});
    settings->show(sections);
}

void CSamplerWin::buildEffects(CSound* sound) {
    const auto lives = [this, sound] { return alive(sound); };
    std::vector<SettingPanel::Section> sections;
    for (int i = 0; i < 2; i++) {
        CFX* fx = sound->fx[i].get();
        const auto others = [this, i] {
            std::vector<CObject*> all;
            for (CSound* s : along()) all.push_back(s->fx[i].get());
            return all;
        };
        sections.push_back({settingsOf(*fx), fx, -1, fx->id, others, lives});
    }
    for (const auto& fx : sound->layer->prog->fx)
        sections.push_back({settingsOf(*fx), fx.get(), -1, "Program " + fx->id, {}, lives});
    settings->show(sections);
}

void CSamplerWin::buildKeys() {
    zones = new ZoneView(this, sampler);
    zones->onChosen = [this](CSound* s) { list->choose(s); };
    body->inner->addControl(zones);
    std::vector<SettingPanel::Section> sections = {{samplerSettings(), &sampler, -1, "", {}, {}}};
    if (CLayer* layer = list->layer()) {
        const auto lives = [this, layer] {
            CSynthProg* prog = sampler.getProg();
            return prog && prog->layers.contains(layer);
        };
        sections.push_back({layerSettings(), layer, -1, "", {}, lives});
    }
    settings->show(sections);
}

void CSamplerWin::arrange(int wide) {
    int y = 0;
    if (modulators) {
        modulators->fit(wide);
        y = modulators->height;
    }
    if (envelope) {
        envelope->setBounds(gap, y, wide - 2 * gap, EnvelopeView::usualHeight);
        y += EnvelopeView::usualHeight;
    }
    if (zones) {
        zones->setBounds(gap, gap, zones->width, zones->height);
        zones->fit(wide - 2 * gap);
        y = gap + zones->height;
    }
    if (!settings) return;
    settings->setBounds(0, y, settings->width, settings->height);
    settings->fit(wide);
}

void CSamplerWin::refresh() {
    list->refresh();
    if (settings) settings->refresh();
    if (envelope) envelope->refresh();
    if (zones) zones->refresh();
}
