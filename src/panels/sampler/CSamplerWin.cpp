#include "panels/sampler/CSamplerWin.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "instruments/CSampler.h"
#include "instruments/CWavSound.h"
#include "instruments/FactoryPrograms.h"
#include "instruments/SamplerEdits.h"
#include "instruments/SoundParams.h"
#include "instruments/SoundSettings.h"
#include "panels/PageRow.h"
#include "panels/PanelBody.h"
#include "panels/sampler/ProgramList.h"
#include "panels/sampler/ProgramSettings.h"
#include "panels/sampler/SoundList.h"
#include "panels/sampler/ZoneView.h"
#include "project/PresetFiles.h"
#include "ui/SettingPanel.h"
#include "ui/Workspace.h"

namespace {

constexpr int gap = 8, listWidth = 200;
constexpr int pageWidth = 92;
const CRect usualPlace = asRect(100, 80, 100 + 960, 80 + 600);

} // namespace

CSamplerWin::CSamplerWin(Workspace& space, CSampler& edited)
    : PanelWin(space, edited, usualPlace, deeds(edited), look(edited)), sampler(edited),
      content(this, space), list(new SoundList(this, space, edited)),
      pages(new PageRow(this, "pages", {"Sound", "Modulators", "Effects", "Keys", "Programs"},
                        pageWidth)) {
    const int below = contentTop();
    list->setBounds(0, below, listWidth, 1);
    list->setAlign(alignHeight, 0, 0);
    content.onTurned = [this] { follow(); };
    list->onChosen = [this] { follow(); };
    addControl(list);
    pages->setBounds(listWidth, below, 1, PageRow::usualHeight);
    pages->setAlign(alignWidth, 0, 0);
    pages->onTurned = [this] { follow(); };
    addControl(pages);
    compare(
        [this] {
            CSynthProg* prog = sampler.getProg();
            return prog ? settingsOfProgram(*prog) : std::vector<SettingValue>();
        },
        [this] { return sampler.getProg(); });
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

MacroLook CSamplerWin::look(CSampler& of) {
    const auto value = [&of](int param) -> std::optional<StoredValue> {
        if (!soundParamMoves(of, param)) return std::nullopt;
        return soundParameter(of, param);
    };
    return {value, [&of](int macro, int param) {
                const CSynthProg* prog = of.getProg();
                const CStr own = prog ? prog->macros[macro].name : CStr();
                return own.empty() ? soundParamName(of, param) : own;
            }};
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
    addFactoryProgram(&sampler, tagOf(sender));
    follow();
}

PanelWin::Shape CSamplerWin::shape() const {
    CSynthProg* prog = sampler.getProg();
    const CSound* sound = list->sound();
    Shape now{{}, {pages->page(), content.modulator()}};
    if (pages->page() == pagePrograms) return now; // whatever is heard there
    now.objects = {prog, sound};
    if (sound && sound->type == typeWavSound)
        now.objects.push_back(static_cast<const CWavSound*>(sound)->clips[0].load());
    if (pages->page() == pageKeys && prog)
        prog->eachSound([&](const CSound* s) { now.objects.push_back(s); });
    return now;
}

bool CSamplerWin::alive(const CSound* wanted) const {
    const CSynthProg* prog = sampler.getProg();
    return prog && prog->hasSound(wanted);
}

std::vector<CSound*> CSamplerWin::along() const {
    std::vector<CSound*> all;
    const CLayer* layer = list->layer();
    const CSound* current = list->sound();
    if (!layer || !layer->editAll || !current) return all;
    for (CSound* s : layer->sounds)
        if (s != current && s->type == current->type) all.push_back(s);
    return all;
}

void CSamplerWin::build() {
    content.clear();
    zones = nullptr;
    programs = nullptr;
    settings = nullptr;
    if (pages->page() == pagePrograms) {
        programs = new ProgramList(this, workspace, sampler);
        body->inner->addControl(programs);
        return;
    }
    CSound* sound = list->sound();
    if (pages->page() == pageKeys) return buildKeys();
    if (!sound) return;
    SoundContent::Subject subject{
        sound, [this, sound] { return alive(sound); }, [this] { return along(); }, {}};
    subject.param = [this, sound](const Setting& setting, bool assign) {
        return soundParamOf(sampler, *sound, setting, assign || macros->learning() >= 0, along());
    };
    if (pages->page() == pageSound) content.buildSound(body->inner, subject);
    if (pages->page() == pageModulators) content.buildModulators(body->inner, subject);
    if (pages->page() == pageEffects) content.buildEffects(body->inner, subject);
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
    settings = new SettingPanel(this, "settings", workspace);
    settings->show(sections);
    body->inner->addControl(settings);
}

void CSamplerWin::arrange(int wide) {
    content.arrange(wide);
    if (programs) programs->fit(wide, body->height);
    if (!zones) return;
    zones->setBounds(gap, gap, zones->width, zones->height);
    zones->fit(wide - 2 * gap);
    settings->setBounds(0, gap + zones->height, settings->width, settings->height);
    settings->fit(wide);
}

void CSamplerWin::refresh() {
    list->refresh();
    content.refresh();
    if (programs) programs->refresh();
    if (!zones) return;
    zones->refresh();
    settings->refresh();
}
