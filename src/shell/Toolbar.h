#pragma once

#include "gui/CGroup.h"
#include "ui/Glyphs.h"
#include "ui/NoticeRouter.h"

#include <vector>

class CAction;
class CActivityLight;
class CButton;
class CFigures;
class CIniFile;
class CMainWin;
class CMeter;
class CMonitorVolume;
class CPositionDisplay;
class CQV;
class CSpectrum;

/// The transport: buttons for actions, position, tempo, signature, MIDI activity, and the level and
/// monitor volume of the output, with its spectrum where there is room.
class Toolbar : public CGroup {
public:
    static constexpr int barHeight = 56;

    Toolbar(CMainWin* window, CQV* host, int width);

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void describe(Description& d, int part) const override;
    /// Brings the displays up to date. Interface tick.
    void refresh();
    bool followSound(); ///< takes what changes while it plays; whether that shows
    /// The song is about to be deleted.
    void forgetSong();
    /// Form of the position and monitor volume.
    void writeSettings(CIniFile& ini) const;

private:
    struct Command {
        CButton* button;
        Glyph glyph;
        const CAction* action; ///< tells whether it is lit; null: never
    };
    void addButton(int& left, int wide, const char* name, Glyph glyph, const char* hint);
    void endStrip(int& left);
    void roundStrips(CGraphic* g) const;
    void paintMaster(CGraphic* g) const;
    void addCommand(CButton* button, Glyph glyph, const char* hint, CAction* action);
    void wearSkin(const Command& command);
    void wearSkins();
    void addRecent(int& left);
    void addDisplays(int left);
    void addMaster();
    void readSettings();
    bool fits(const CCtrl* ctrl) const;
    bool spectrumFits() const;
    int signColour(const Command& command) const;
    void paintGlyph(CObject* sender, CGraphic* g, CRect rect);
    void recentClicked(CObject* sender);

    CMainWin* window;
    CQV* qv;
    Glyphs glyphs;
    std::vector<Command> commands;
    std::vector<CRect> strips; ///< of buttons side by side
    CStr peak;                 ///< of the output since it was cleared
    std::vector<CFigures*> displays;
    CButton* recentButton = nullptr;
    CPositionDisplay* position = nullptr;
    CActivityLight* activity = nullptr;
    CMeter* master = nullptr;
    CSpectrum* spectrum = nullptr;
    CMonitorVolume* volume = nullptr;
    NoticeLink look;
};
