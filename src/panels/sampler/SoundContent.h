#pragma once

#include "engine/ParamRef.h"
#include "engine/Setting.h"

#include <functional>
#include <vector>

class CGroup;
class CMod;
class CObject;
class CSound;
class CWin;
class EnvelopeView;
class LfoView;
class OperatorView;
class PageRow;
class SampleBox;
class SettingPanel;
class Workspace;

/// What a page about a sound is made of: the settings of the sound, of one of its modulators, or of
/// its effects. Interface thread.
class SoundContent {
public:
    /// The sound that is edited. What it refers to is only touched while it is alive.
    struct Subject {
        CSound* sound = nullptr;
        std::function<bool()> alive;
        std::function<std::vector<CSound*>()> along; ///< sounds of its class that are set with it
        std::function<ParamRef(const Setting&, bool assign)> param; ///< see SettingPanel
        Settings more = {}; ///< of the sound, behind its own
    };

    std::function<void()> onTurned; ///< another modulator is to show

    SoundContent(CWin* owner, Workspace& space) : win(owner), workspace(space) {}

    // Make the controls of a page, in a group that is empty.
    void buildSound(CGroup* in, const Subject& subject);
    void buildModulators(CGroup* in, const Subject& subject);
    void buildEffects(CGroup* in, const Subject& subject);
    void clear(); ///< forgets them: the group has dropped them

    void arrange(int width); ///< lays them out below each other
    void refresh();
    int modulator() const { return shownModulator; } ///< that is shown, from 0 on

private:
    void addPicture(CGroup* in, const Subject& subject);
    SettingPanel* addSettings(CGroup* in);

    CWin* win;
    Workspace& workspace;
    // Of the page that shows; null where it has none.
    PageRow* modulators = nullptr;
    EnvelopeView* envelope = nullptr;
    LfoView* lfo = nullptr;
    OperatorView* operators = nullptr;
    SampleBox* sample = nullptr;
    SettingPanel* settings = nullptr;
    int shownModulator = 0;
};
