#pragma once

#include "mixer/StripModel.h"

#include <functional>
#include <memory>

class CCtrl;
class CMixerPanel;
class CObject;
class CPopup;

/// The menus of strips: where they lead, what they record or play, effects, and what is done to
/// whole strips. Outlives the menus that it has filled. Interface thread.
class StripMenus {
public:
    explicit StripMenus(CMixerPanel& of) : panel(of) {}

    void offerTargets(CCtrl* from, const MixerStrip& strip);
    void offerSources(CCtrl* from, const MixerStrip& strip); ///< of an audio track
    void offerPrograms(CCtrl* from, const MixerStrip& strip);
    void offerEffects(CCtrl* from, const MixerStrip& strip, int index);
    void fillStrips(CPopup* popup); ///< about the selected strips
    /// At the pointer, or below what has the keys.
    void openAt(void (StripMenus::*fill)(CPopup*));

    static CPopup* newPopup(const CCtrl* from); ///< frees itself

private:
    void fillInsert(CPopup* popup, CComp* insert);
    void fillKinds(CPopup* popup, void (StripMenus::*chosen)(CObject*));
    /// The plug-ins that a strip can run through; none is chosen once the strip has gone.
    void fillPlugins(CPopup* popup, const std::function<void(std::unique_ptr<CComp>)>& chosen);
    CComp* insert() const;
    bool stands() const; ///< the strip of the menu is still there

    void targetChosen(CObject* sender);
    void sourceChosen(CObject* sender);
    void channelsChosen(CObject* sender);
    void programChosen(CObject* sender);
    void addChosen(CObject* sender);
    void replaceChosen(CObject* sender);
    void fillPresets(CPopup* popup);
    void takePreset(const CStr& path);
    void presetChosen(CObject* sender);
    void saveChosen(CObject* sender);
    void powerChosen(CObject* sender);
    void wetChosen(CObject* sender);
    void openChosen(CObject* sender);
    void removeChosen(CObject* sender);
    void moveChosen(CObject* sender);

    CMixerPanel& panel;
    MixerStrip strip{};
    int index = 0; ///< of the insert
    std::vector<CComp*> targets;
};
