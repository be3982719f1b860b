#pragma once

#include <vector>

class CCtrl;
class CGroup;

/// Whether Tab stops at a control: it is a tab stop, visible and enabled.
bool takesTab(const CCtrl* ctrl);
/// Adds what Tab stops at in a control and all that is inside, in the order of the tree; so is
/// `focused`, null for none, though Tab may pass it by now.
void collectStops(CCtrl* ctrl, const CCtrl* focused, std::vector<CCtrl*>& stops);
/// The nearest tab stop inside a group to the side of `from` that an arrow key points to, in its
/// row or column; null without one, or for another key.
CCtrl* neighbourOf(const CCtrl* from, CGroup* group, int key);
