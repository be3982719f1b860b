#pragma once

#include "panels/PanelWin.h"
#include "panels/sampler/SoundContent.h"

class CSampler;
class CSound;
class PageRow;
class ProgramList;
class SettingPanel;
class SoundList;
class ZoneView;

/// The window of a sampler: its layers and sounds at the left, and of the one that is chosen there
/// the sound itself, its modulators, its effects or the keys, a page each, or programs to take.
/// Interface thread.
class CSamplerWin : public PanelWin {
public:
    CSamplerWin(Workspace& workspace, CSampler& sampler);

private:
    enum Page : int { pageSound, pageModulators, pageEffects, pageKeys, pagePrograms };

    Shape shape() const override;
    void build() override;
    void arrange(int wide) override;
    void refresh() override;
    ProgramBar::Deeds deeds(CSampler& of);
    static MacroLook look(CSampler& of);
    void addPrograms(CPopup* popup);
    void factoryChosen(CObject* sender);
    void defaultChosen(CObject*);

    void buildKeys();
    /// Sounds like the current one that are set along with it, where its layer has it so.
    std::vector<CSound*> along() const;
    bool alive(const CSound* sound) const;

    CSampler& sampler;
    SoundContent content;
    SoundList* list;
    PageRow* pages;                  ///< which page shows
    ProgramList* programs = nullptr; ///< of its page, among the controls; else null
    // Of the page of the keys, among the controls; else null.
    ZoneView* zones = nullptr;
    SettingPanel* settings = nullptr;
};
