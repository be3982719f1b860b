#pragma once

class CComp;
class CStr;
class CUndoItem;

// What a user does to the programs of any component. Each is one step of the history, carried out
// on return. Interface thread.

/// Nothing for the last one, and outside the list.
void removeProgram(CComp* comp, int index);
void renameProgram(CComp* comp, int index, const CStr& name); ///< nothing for the name that it has

/// For `CComp::perform`: keeps the program current that is, while one comes, leaves or changes its
/// place by an item of a step, or makes that current which comes. Nothing for other items. Graph
/// holder.
void followProgram(CComp* comp, const CUndoItem& item);
