#pragma once

#include "base/CStr.h"
#include "common/Loudness.h"
#include "gui/CGroup.h"
#include "mixer/StripButtons.h"
#include "mixer/StripModel.h"

#include <array>
#include <functional>
#include <vector>

class CAudioLed;
class CDBLabel;
class CMixerPanel;
class CPanValue;
class CStoredCtrl;
class CVolFader;
class DbScale;
class EqSection;
class GraphProbe;
class InsertSlot;
class LoadLabel;
class LoudnessLabel;
class NameField;
class PeakLabel;
class ValueBar;
class ValueDoor;
struct CPalette;
struct StripPlan;

struct StripLayout;

/// One strip of the mixer: the name in the colour of its track, and what `StripLayout` tells below
/// it. A press on the name selects it, with Control besides others, with Shift up to it; a double
/// click renames. Interface thread.
class CMixerStrip : public CGroup {
public:
    CMixerStrip(CMixerPanel& panel, const MixerStrip& of);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;

    const MixerStrip& strip() const { return of; }
    const CStr& name() const { return shown.name; }
    /// It has another place among the strips, or less or more to show.
    void place(const MixerStrip& now, const StripPlan& plan, bool wide);
    void refresh();        ///< follows all values
    bool followSound();    ///< follows the level; whether that shows
    void followLoudness(); ///< where that shows, which measures from the first time on
    void showLoad(const GraphProbe& probe);
    void stopMeasuring(); ///< what is measured for the mixer alone
    void rename();        ///< opens a field in place of the name
    std::vector<CCtrl*> stops();

    // For what is on it.
    ValueDoor* door() const;
    void tell(const CStr& text) const;
    std::vector<MixerStrip> together() const;
    void swipe(MixSwitch which, const CCtrl* from, int x, int y, int btn);
    void toggle(MixSwitch which);
    void toggleSafe();
    void clearPeaks();
    void resetLoudness();    ///< of an output
    int faderTravel() const; ///< pixels
    void showEq(bool on);
    void openEq();
    void offerTargets(CCtrl* from);
    void offerSources(CCtrl* from);
    void offerPrograms(CCtrl* from);
    void offerEffects(InsertSlot* slot);
    bool openInsert(CComp* insert);
    void removeInsertOf(InsertSlot* slot);
    void stepInsert(InsertSlot* slot, int by);
    bool takesInsertDrop() const;
    void dropInserts(int index, int btn);

private:
    void paintName(CGraphic* g, const StripLayout& at, int ground);
    /// What is painted beside the controls.
    struct Shown {
        CStr name;
        int colour = -1;
        bool selected = false, heard = true;
        bool operator==(const Shown&) const = default;
    };
    Shown present() const;
    Loudness* measured() const; ///< null as long as nobody has asked
    void stopLoudness();
    void showLoudness(const Loudness::Levels& levels);
    ValueBar* newBar(const char* name,
                     const std::function<StoredValue(const MixerStrip&)>& valueOf);
    void fit(const StripPlan& plan);
    void nameControls();
    void follow(CStoredCtrl* ctrl) const;

    CMixerPanel& panel;
    MixerStrip of;
    Shown shown;
    StripChoice *source, *target;
    ValueBar* trim;
    ModeButton* mode;
    std::vector<InsertSlot*> slots;
    EqSection* eq;
    std::vector<ValueBar*> sends;
    CPanValue* pan;
    CDBLabel* gain;
    PeakLabel* peak;
    CVolFader* fader;
    DbScale* scale;
    LoudnessLabel *loudness, *truePeak;
    CAudioLed* meter;
    LoadLabel* load;
    std::array<StripSwitch*, mixSwitches> switches;
    NameField* field = nullptr; ///< while it is renamed
    unsigned turns = 0;         ///< of `refresh`, since it was placed
};
