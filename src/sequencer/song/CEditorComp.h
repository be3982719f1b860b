#pragma once

#include "engine/CComp.h"

class CPart;

/// What a press with the left button does in editors of notes.
enum NoteTool : int { toolPointer = 0, toolPaint = 1, toolKnife = 2, toolGlue = 3 };

/// Stands for the note editor's window in the song: its geometry in `editorStruct`, its options,
/// and the part that it shows. Interface thread.
class CEditorComp : public CComp {
public:
    static constexpr int optionBytes = 32;

    unsigned char options[optionBytes] = {};

    // How notes are edited, here and in the rows of tracks; not stored.
    int tool = toolPointer;      ///< NoteTool
    int chord = -1;              ///< kind of chord (Scales.h) that is put in, -1 for a single note
    bool transformAsked = false; ///< the editor is to open its transform
    bool snapsToScale = false;   ///< new and dragged notes come to keys of the song's scale

    explicit CEditorComp(CQV* root) : CComp(root) {
        id = "Editor";
        type = compEditor;
    }

    /// The window looks at it in its next idle pass, which the song's leads to. Null for none; not
    /// owned, and good only as long as the part stands on a track.
    void setPart(CPart* wanted) { shown = wanted; }
    CPart* part() const { return shown; }

private:
    CPart* shown = nullptr;
};
