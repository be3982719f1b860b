#pragma once

#include "base/CStr.h"
#include "gui/controls/CButton.h"
#include "sequencer/Scales.h"

class CSeq;
class Workspace;

// The scale of a song and kinds of chords, as views tell and offer them. Interface thread.

Scale scaleOfSong(const CSeq* seq);
CStr keyName(int key);                ///< of any octave, "C#"
CStr scaleText(const Scale& scale);   ///< "A Minor", "No scale"
CStr chordText(const FoundChord& of); ///< "Am7", "C/E"; empty for none

/// Tells the song's scale, and offers others in a menu, with what helps to keep to it.
class ScaleButton : public CButton {
public:
    ScaleButton(CWin* win, Workspace& workspace, int left, int top, int height);
    void refresh(); ///< follows the song

private:
    void clicked(CObject*);
    void rootChosen(CObject* sender);
    void kindChosen(CObject* sender);
    Workspace& workspace;
};

/// Tells which chord a drawn note becomes, and offers others.
class ChordButton : public CButton {
public:
    ChordButton(CWin* win, Workspace& workspace, int left, int top, int height);
    void refresh(); ///< follows the choice

private:
    void clicked(CObject*);
    void chosen(CObject* sender);
    Workspace& workspace;
};
