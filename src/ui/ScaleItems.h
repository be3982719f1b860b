#pragma once

#include "base/CStr.h"
#include "sequencer/song/Scales.h"
#include "ui/SongMenuButton.h"

// The scale of a song and kinds of chords, as views tell and offer them. Interface thread.

CStr scaleText(const Scale& scale);   ///< "A Minor", "No scale"
CStr chordText(const FoundChord& of); ///< "Am7", "C/E"; empty for none

/// Tells the scale at the song's position, and offers others in a menu, with what helps to keep to
/// it; from the bar of the position on it can be another one.
class ScaleButton : public SongMenuButton {
public:
    ScaleButton(CWin* win, Workspace& workspace, int left, int top, int height);
    void refresh(); ///< follows the song

private:
    void fill(CPopup* popup, CSeq* seq) override;
    void rootChosen(CObject* sender);
    void kindChosen(CObject* sender);
    void changeAdded(CObject* sender);
    void changeDropped(CObject* sender);
};

/// Tells which chord a drawn note becomes, and offers others.
class ChordButton : public SongMenuButton {
public:
    ChordButton(CWin* win, Workspace& workspace, int left, int top, int height);
    void refresh(); ///< follows the choice

private:
    void fill(CPopup* popup, CSeq* seq) override;
    void chosen(CObject* sender);
};
