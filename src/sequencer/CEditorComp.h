#pragma once

#include "engine/CComp.h"

class CPart;

/// Stands for the note editor's window in the song: its geometry in `editorStruct`, its options,
/// and the part that it shows. Interface thread.
class CEditorComp : public CComp {
public:
    static constexpr int optionBytes = 32;

    unsigned char options[optionBytes] = {};

    explicit CEditorComp(CQV* root) : CComp(root) {
        id = "Editor";
        type = compEditor;
    }

    /// The window looks at it in its next idle pass, which the song's leads to. Null for none; not owned, and good only as
    /// long as the part stands on a track.
    void setPart(CPart* wanted) { shown = wanted; }
    CPart* part() const { return shown; }

private:
    CPart* shown = nullptr;
};
