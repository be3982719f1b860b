#pragma once

#include "panels/PanelWin.h"

class CButton;
class CMod;
class CSampler;
class CSound;
class EnvelopeView;
class PageRow;
class SettingPanel;
class SoundList;
class ZoneView;
struct Setting;

/// The window of a sampler: its layers and sounds at the left, and of the one that is chosen there
/// the sound itself, its modulators, its effects or the keys, a page each. Interface thread.
class CSamplerWin : public PanelWin {
public:
    CSamplerWin(Workspace& workspace, CSampler& sampler);

private:
    enum Page : int { pageSound, pageModulators, pageEffects, pageKeys };

    std::vector<const void*> shape() const override;
    void build() override;
    void arrange(int wide) override;
    void refresh() override;
    ProgramBar::Deeds deeds(CSampler& of);
    void addPrograms(CPopup* popup);
    void factoryChosen(CObject* sender);
    void defaultChosen(CObject*);

    void buildSound(CSound* sound);
    void buildModulators(CSound* sound);
    void buildEffects(CSound* sound);
    void buildKeys();
    CMod* modulator(CSound* sound) const; ///< the one that the page shows
    /// Sounds like the current one that are set along with it, where its layer has it so.
    std::vector<CSound*> along() const;
    bool alive(const CSound* sound) const;

    CSampler& sampler;
    SoundList* list;
    PageRow* pages; ///< which page shows
    // Of the page that shows, among the controls; null where it has none.
    PageRow* modulators = nullptr;
    EnvelopeView* envelope = nullptr;
    ZoneView* zones = nullptr;
    SettingPanel* settings = nullptr;
    int shownModulator = 0;
};
