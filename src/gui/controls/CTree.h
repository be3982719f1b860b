#pragma once

#include "gui/CGroup.h"
#include "gui/controls/CTreeNode.h"

#include <vector>

class CScrollbar;

/// Nodes that open and close; it scrolls. `onChange` tells that nodes were selected.
///
/// A press on the box in front of a node opens or closes it. A press on the node selects it, and
/// opens or closes it too, unless several may be selected. `onDrag` is asked for when the press is
/// dragged.
class CTree : public CGroup {
public:
    static constexpr int rowHeight = 18, boxWidth = 16, levelIndent = 16; ///< pixels

    CTreeNode root; ///< not shown itself; its children are the top nodes
    bool multiSelect = false;
    CTreeNode* current = nullptr; ///< the keys move from here; null before the first choice
    /// Owned. With the node as sender: it opens or closes, and may be filled now; it was clicked
    /// twice, or Return was pressed on it.
    COnChange *onExpanding = nullptr, *onExecute = nullptr;
    COnChange* onRightClick = nullptr; ///< owned; sender is the tree, the node has been selected
    COnPaint* onDrawIcon = nullptr;    ///< owned; sender is the node, the square is 16 wide

    CTree(CWin* win, const CStr& name, int left, int top, int width, int height);
    ~CTree() override;

    void update();                   ///< lays the nodes out anew, after they were changed
    void clearNodes();               ///< deletes them all
    void select(CTreeNode* node);    ///< it alone, opening those above; null nothing. No report
    CTreeNode* selectedNode() const; ///< the first one; null without one
    void selectedNodes(ListOf<CTreeNode>* nodes) const; ///< adds them, from the top on
    void expcol(CTreeNode* node);   ///< opens or closes it; without children it stays closed
    CTreeNode* nodeAt(int y) const; ///< at a height of this control; null below the last
    CRect nodeRect(const CTreeNode* node) const; ///< its line in this control; empty if hidden

    void resized() override;
    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    bool contextMenu() override;
    void describe(Description& d, int part) const override;
    int accessParts() const override;
    int partAround(int part) const override;
    int focusedPart() const override;
    bool pressPart(int part) override;

protected:
    virtual void nodeChanged(); ///< brings the current node into view and reports

private:
    friend class CTreeNode;

    void forget(const CTreeNode* node);
    void layOut(CTreeNode* node, int indent);
    bool onBox(const CTreeNode* node, int x) const;
    void unselectAll(CTreeNode* below);
    void pressNode(CTreeNode* node, int btn);
    void selectRange(CTreeNode* to);
    void moveTo(int line, bool extend);
    int lineOf(const CTreeNode* node) const;
    int linesShown() const;
    bool openKey(int key);
    void paintNode(CGraphic* g, CTreeNode* node);
    void scrolled(CObject* sender);

    CScrollbar* bar;               ///< one of `controls`; in pixels
    std::vector<CTreeNode*> lines; ///< the visible nodes from the top on
    CTreeNode* anchor = nullptr;   ///< where a range begins
    int shownPos = 0;              ///< of the bar, as painted
    bool narrows = false;          ///< a release without a drag selects the pressed node alone
};
