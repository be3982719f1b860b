#pragma once

#include "gui/CGroup.h"
#include "mixer/MixerState.h"
#include "mixer/SceneMenu.h"
#include "mixer/StripFilter.h"
#include "mixer/StripMenus.h"

#include <memory>
#include <vector>

class CEqWin;
class CMixerStrip;
class CScrollbar;
class DragHandler;
class GraphProbe;
class SectionTitle;
enum class MixSwitch;

/// The strips of the mixer, section beside section under titles. The outputs stay at the right
/// while the others are scrolled. The wheel over the last 64 pixels at the right goes up and down,
/// anywhere else from side to side. Tab stops at one strip and what is on it; Left and Right lead
/// to the same on its neighbours, Up and Down along the strip. Interface thread.
class CMixerPanel : public CGroup {
public:
    static constexpr int titleHeight = 18, wheelEdge = 64;

    MixerState state;
    StripMenus menus{*this};
    SceneMenu scenes{*this};

    CMixerPanel(CWin* win, Workspace& workspace, CMixer& mixer);
    ~CMixerPanel() override;

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool touch(int x, int y, int btn, const TouchStep& step) override;
    bool keyInside(int key, int mods) override;
    void reveal(const CCtrl* ctrl) override;
    bool contextMenu() override;
    void describe(Description& d, int part) const override;

    void follow(); ///< the strips that there are
    /// The same if the graph has changed and the notices of it are still to come: before anything
    /// uses a strip, as what has left the graph may be freed from the next step on.
    void followIfStale();
    void layout();         ///< by the strips and what of them is to be seen
    void refresh();        ///< follows what has no notice; every 40 ms
    void followLoudness(); ///< on another page too, as what is measured waits for a while only
    void stopMeasuring();
    bool shows(StripSection section) const; ///< it is switched on
    void show(StripSection section, bool on);
    const StripFilter& filter() const { return shownBy; }
    /// Of the selected strips, where it is about some; false where none is.
    bool setFilter(StripFilter::Kind kind);
    void setNameFilter(const CStr& part);
    /// From now on shows all that leads to a strip, whatever sections are switched on.
    void showRouted(const COutputChannel* to);
    bool showsRows(int rows) const; ///< StripRows
    void showRows(int rows, bool on);
    const std::vector<CMixerStrip*>& strips() const { return made; } ///< from left to right

    // What is done to strips.
    void choose(CMixerStrip& strip, int btn);
    bool renameSelected(); ///< opens a field for the first selected; false without one
    void renameStrip(const MixerStrip& strip, const CStr& name);
    void deleteSelected();
    void groupSelected(); ///< into a new group
    void setWide(bool wide);
    void toggleSelected(MixSwitch which);
    void toggle(MixSwitch which, const MixerStrip& strip);
    void toggleSafe(const MixerStrip& strip); ///< from the solo of others
    bool anySolo() const;
    void unSolo();
    void clearPeaks(const MixerStrip& strip);
    void foldDrums(const MixerStrip& strip); ///< shows strips for its sounds, or no more
    void openEq(const MixerStrip& strip);
    bool openInsert(CComp* insert); ///< false where it has no window
    void addPreset(const MixerStrip& strip, const CStr& path, int index);
    void removeInsertAt(const MixerStrip& strip, int index);
    void stepInsert(CMixerStrip& strip, int index, int by);
    bool takesInsertDrop() const;
    void dropInserts(const MixerStrip& strip, int index, int btn);

    // Drags.
    void swipe(MixSwitch which, CMixerStrip& strip, const CCtrl* from, CPoint at, int btn);
    /// Those that lie between two places of this panel.
    std::vector<CMixerStrip*> stripsBetween(int from, int to) const;
    int scrollAcross(int by); ///< by how much it has been

private:
    class Row; ///< strips that are scrolled together
    struct Place {
        size_t strip = 0;
        CStr stop;
        int number = 0; ///< of stops with that name
        bool found = false;
    };

    void reconcile(const std::vector<MixerStrip>& wanted);
    CMixerStrip* stripOf(const COutputChannel* ch) const;
    void dropStrip(CMixerStrip* strip);
    void makePlan();
    int viewHeight() const; ///< without the bar below, where there has to be one
    void placeSections();
    void scrolled(CObject*);
    void scrollTo(int x, int y);
    void followLoad();
    bool isStale() const;
    Place focusPlace() const;
    void focusOn(const Place& place);
    void markStops();

    std::vector<MixerStrip> all; ///< as they were listed last
    StripFilter shownBy;
    bool everySection = false;
    std::vector<CMixerStrip*> made;
    std::vector<SectionTitle*> titles; ///< by StripSection
    int shownMask = -1;                ///< of sections
    Row *moving, *fixed;
    CScrollbar *across, *down;
    CMixerStrip* marked = nullptr; ///< that Tab stops at; among `made`
    const std::unique_ptr<GraphProbe> probe;
    int turns = 0;                     ///< of `refresh`, to the next question to the probe
    std::unique_ptr<CEqWin> eqWin;     ///< null until it is opened first
    std::unique_ptr<DragHandler> drag; ///< the latest; null before the first
};
