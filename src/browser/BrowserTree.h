#pragma once

#include "browser/BrowserKinds.h"
#include "browser/FolderWatch.h"
#include "gui/controls/CTree.h"

#include <set>
#include <string>

class CQV;
struct BrowserDeeds;

/// The tree of folders, files and samples. A node is filled when it opens, and then follows the
/// disk. Interface thread.
class BrowserTree : public CTree {
public:
    /// `deeds` outlives it.
    BrowserTree(CWin* win, const CStr& name, CQV* host, const BrowserDeeds& deeds);

    void fillTop();
    /// Empties the nodes of a kind; those that are open are filled again.
    void refreshNode(int kind);
    void refresh(CTreeNode* node); ///< the same for one
    void idle();                   ///< follows the disk; interface tick
    /// The node at the top above a node; null for none.
    static CTreeNode* topOf(CTreeNode* node);
    /// A node that stands for a file on the disk, which can be dragged and chosen.
    static bool isFile(const CTreeNode* node);

private:
    void fill(CTreeNode* node);
    void fillDisks(CTreeNode* node);
    void fillSection(CTreeNode* node, const BrowserKind& kind);
    void fillFolder(CTreeNode* node);
    void fillPool(CTreeNode* node);
    void fillShelf(CTreeNode* node);
    void fillComponents(CTreeNode* node);
    static void fillTags(CTreeNode* node);
    static void fillTag(CTreeNode* node);
    void addFolder(CTreeNode* to, const CStr& path, const char* filter, const CStr& caption);
    static void addFile(CTreeNode* to, const CStr& path, int kind, const CStr& caption);
    void expanding(CObject* sender);
    void drawIcon(CObject* sender, CGraphic* g, CRect square);
    void reopen(CTreeNode* below, const std::set<std::string>& open);

    CQV* host;
    const BrowserDeeds& deeds;
    FolderWatch watch;
};

/// Draws what a node stands for, 16 wide.
void drawNodeIcon(CGraphic* g, const CTreeNode& node, CRect square, int color);
