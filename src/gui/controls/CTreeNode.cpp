#include "gui/controls/CTreeNode.h"

#include "gui/controls/CTree.h"

CTreeNode::~CTreeNode() {
    clear();
    if (CTree* shown = tree()) shown->forget(this);
}

CTree* CTreeNode::tree() const {
    const CTreeNode* top = this;
    while (top->parent) top = top->parent;
    return top->owner;
}

CTreeNode* CTreeNode::add(const CStr& caption) {
    return add(new CTreeNode(caption));
}

CTreeNode* CTreeNode::add(CTreeNode* node) {
    node->parent = this;
    children.add(node);
    return node;
}

CTreeNode* CTreeNode::addSorted(CTreeNode* node) {
    int at = 0;
    for (const CTreeNode* child : children) {
        if (compareText(child->text, node->text) > 0) break;
        at++;
    }
    node->parent = this;
    children.insert(at, node);
    return node;
}

void CTreeNode::clear() {
    deleteAll(children);
}

bool CTreeNode::isBelow(const CTreeNode* other) const {
    const CTreeNode* at = parent;
    while (at && at != other) at = at->parent;
    return at != nullptr;
}
