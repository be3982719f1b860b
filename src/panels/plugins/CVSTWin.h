#pragma once

#include "panels/ProgramBar.h"
#include "plugins/scan/PluginList.h"
#include "ui/CCompEditor.h"

class CButton;
class CMenuItem;
class CPopup;
class CVST;
class EditorFrame;
class MacroRow;
class ParamList;
class SettingButton;
class Workspace;

/// The window of a plug-in: a bar with its programs and what the host sets of it, below that its
/// macros where one turns something or the user wants them, and then either its own editor or its
/// parameters as a list. The plug-in has its editor open only while the window is shown. Interface
/// thread.
class CVSTWin : public CCompEditor {
public:
    CVSTWin(Workspace& workspace, CVST& plugin);
    ~CVSTWin() override;

    void show(bool activate) override;
    void hide() override;
    void idle() override;

private:
    static constexpr int barHeight = ProgramBar::usualHeight;

    ProgramBar::Deeds deeds();
    CButton* addButton(const char* name, const CStr& text, const char* help, int wide,
                       void (CVSTWin::*clicked)(CObject*));
    void layBar();
    void layContent();
    int contentTop() const;
    void fill();
    void empty();
    void fitEditor(CObject*);
    void openFile(const CStr& path);
    void saveFile(const CStr& path);
    void powerClicked(CObject*);
    void channelClicked(CObject*);
    void channelChosen(CMenuItem* sender);
    void listClicked(CObject*);
    void keysClicked(CObject*);
    void macrosClicked(CObject*);
    void locateClicked(CObject*);
    void restartClicked(CObject*);
    void moreClicked(CObject*);
    void placeChosen(CMenuItem* sender);
    void addFormats(CPopup* popup);
    void addFormat(CPopup* popup, const PluginList::Entry& other);
    std::vector<const PluginList::Entry*> otherFormats() const;
    void insteadClicked(CObject*);
    void become(const CStr& path);
    void refill();

    Workspace& workspace;
    CVST& plugin;
    ProgramBar* programs;
    MacroRow* macros;
    CButton *power, *channel, *list, *keys, *turned, *locate, *instead, *again, *more;
    EditorFrame* editor = nullptr; ///< among the controls, as the next: one of them, while shown
    ParamList* params = nullptr;
    bool listed;         ///< the user wants the parameters
    bool failed = false; ///< as the bar shows it
    CStr shownFile;      ///< the plug-in as it is shown
};
