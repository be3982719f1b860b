#pragma once

#include "ui/ComputerKeys.h"
#include "ui/Options.h"

class CPart;
class CSeq;
class EditorTable;
class Workspace;

/// The actions of the note editor, and its place in the table of editors. Interface thread.
class NoteCommands {
public:
    NoteCommands(Workspace& workspace, EditorTable& editors);

private:
    CSeq* seq() const;
    CPart* selectedPart() const;
    CPart* stepPart() const;
    void toggleSteps();
    void bindSwitches();
    void bindTools();
    void bindColours();
    void playLastBar();

    Workspace& workspace;
    Option listShown, othersShown, folded, colours, together;
    ComputerKeys computerKeys;
};
