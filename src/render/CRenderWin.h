#pragma once

#include "gui/dialogs/CDialogWin.h"
#include "sequencer/render/RenderExport.h"

#include <memory>
#include <vector>

class CCheckbox;
class CDropdown;
class CLabel;
class CListbox;
class Workspace;
class CProgressBar;
class CQV;
class CSeq;
class WorkScope;

/// Asks how the song is to be exported, and exports it: to a file or, of several tracks, to a
/// folder, for which it asks; with an add-on also to a service. It shows how far that is, and
/// closes with a result when all is written. While it runs it stays open: what would close it
/// cancels.
class CRenderWin : public CDialogWin, public RenderUi {
public:
    /// `choices` is what it begins with and what the user has chosen afterwards.
    CRenderWin(Workspace& space, CRender& choices, CSeq* song);
    ~CRenderWin() override;

    /// True, with a message, while a take is running, which an export would end.
    static bool refused(CWin* owner, CQV* host);
    bool shared() const { return uploaded; } ///< the result is with a service, not a file
    void accept() override;
    void hide() override;
    void onStatus(const CStr& text) override;
    bool onRender(float done) override;
    CStr getVerifier() override;

private:
    /// A field of numbers to choose from.
    struct Choice {
        CDropdown* list;
        int CRender::*field;
        std::vector<int> values;
    };
    void addSelection();
    void addChoices();
    void addProgress();
    CDropdown* addChoice(CPoint place, const char* label, const char* name, int CRender::*field,
                         std::vector<int> values, CStr (*textOf)(int));
    void chosen(CObject* sender);
    void rangeChanged(CObject* sender);
    void multiTrackClicked(CObject* sender);
    void shareClicked(CObject* sender);
    void cancelClicked(CObject* sender);
    void update();
    CStr summary() const;
    bool nothingToDo();
    bool chooseFile();
    bool chooseFolder();
    void process();
    void setWorking(bool on);

    Workspace& workspace;
    CRender& render;
    CSeq* seq;
    CListbox* ranges;
    CCheckbox* multiTrack;
    std::vector<Choice> choices;
    CDropdown *rates, *bits, *bitrates;
    CLabel* status;
    CProgressBar* bar;
    CButton *shareButton = nullptr, *closeButton;
    std::unique_ptr<WorkScope> work; ///< while it exports
    bool cancelled = false, uploaded = false;
};

/// Opens the dialog with what was chosen last, and keeps what was chosen now.
void exportProject(Workspace& workspace, CSeq* seq);
