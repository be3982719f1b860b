#pragma once

#include "notes/EditedPart.h"
#include "ui/CCompEditor.h"
#include "ui/NoticeRouter.h"

#include <vector>

class CEditorComp;
class CPopup;
class EditorBar;
class EditorBody;
class Workspace;

/// The editor of what lies inside a part: a bar above, and below it the body that is made for the
/// part which its component tells. Interface thread.
class CEditorWin : public CCompEditor, private EditedPart {
public:
    CEditorWin(Workspace& workspace, CEditorComp& editor);
    ~CEditorWin() override;

    void resized() override;
    bool canRun(const CAction* action) const override;
    bool onAction(CAction* action) override;
    void mergeMenu(CMenu* menu) override;
    bool onFrame() override; ///< follows the play position
    void idle() override;    ///< follows the part, and what has no notice

private:
    void songChanged();
    void showPart(CPart* wanted);
    void layout();
    void fillPart(CObject* popup);
    void fillOptions(CPopup* popup);

    CEditorComp& editor;
    EditorBar* bar;
    std::vector<EditorBody*> bodies; ///< at least one
    EditorBody* body;                ///< the visible one
    std::vector<NoticeLink> links;
};
