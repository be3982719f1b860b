#pragma once

#include "browser/BrowserDeeds.h"
#include "browser/BrowserSearch.h"
#include "browser/RangeFile.h"
#include "gui/CGroup.h"
#include "ui/NoticeRouter.h"

#include <vector>

class BrowserTree;
class CBrowserPreview;
class CPopup;
class CPreviewPanel;
class CSplit;
class SearchField;
class Workspace;

/// The panel at the left of the main window: folders, plug-ins, components and samples to be
/// dragged into the song and the graph, a search in all of them, and a player for what is chosen.
/// Interface thread.
class CBrowser : public CGroup {
public:
    static constexpr int usualWidth = 260, leastWidth = 180;
    static constexpr int usualPreview = 136; ///< height of the preview

    CBrowser(CWin* win, Workspace& workspace, BrowserDeeds deeds);
    ~CBrowser() override;
    CBrowser(const CBrowser&) = delete;
    CBrowser& operator=(const CBrowser&) = delete;

    void resized() override;
    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;

    void idle();     ///< interface tick
    void shown();    ///< it has come to be seen
    void takeKeys(); ///< to the search field
    void writeSettings() const;
    /// Does what a double click does: brings a file into the song or the graph, opens a project,
    /// adds a component, carries an action out, opens a folder.
    void execute(CTreeNode* node);

private:
    void addTop();
    BrowserTree* addTree(const char* id);
    BrowserTree* front() const; ///< the tree that shows
    void look();                ///< shows what the search field asks for
    void endSearch();
    void searchClicked(CObject* sender);
    void doneClicked(CObject* sender);
    void chosen(CObject* sender);
    void executed(CObject* sender);
    void dragged(CObject* sender);
    void rightClicked(CObject* sender);
    bool treeKey(CObject* sender, int& key, int mods);
    void previewStart(const CTreeNode* node);
    void previewStop();
    void fillDragList();
    void fillWithRange();
    void dragRange();
    void bring(void (CBrowser::*fill)());
    void used(const CTreeNode* node);
    void foldersChanged();

    // The menu.
    void fillMenu(CPopup* popup, CTreeNode* node);
    void fillFolders(CPopup* popup, CTreeNode* node);
    void fillFile(CPopup* popup, CTreeNode* node);
    void addFolder(int mode, const CStr& path);
    void askFolder(int mode);
    void removeFolder(CTreeNode* node);
    void rename(CTreeNode* node);
    void removeUnused();
    void toggleFavourite(const CStr& path);
    void editTags(const CStr& path);
    void togglePreview();
    int folderModeOf(CTreeNode* node) const; ///< of a folder that the user has named; 0 for others

    Workspace& workspace;
    CQV* qv;
    const BrowserDeeds deeds;
    BrowserSearch search;
    CBrowserPreview* preview; ///< the host's
    RangeFile rangeFile;
    SearchField* field = nullptr;
    CCtrl *searchButton = nullptr, *doneButton = nullptr;
    BrowserTree *tree, *results;
    CSplit* split;
    CPreviewPanel* panel;
    bool searching = false;
    int sinceLook = 0;                                           ///< ticks
    bool found = false, poolStale = false, foldersStale = false; ///< to be shown
    std::vector<NoticeLink> links;
};
