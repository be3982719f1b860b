#pragma once

#include "base/CObject.h"
#include "base/CStr.h"

#include <vector>

class CPopup;
class CQV;
class CSeq;
class Workspace;
struct ProcessEntry;

/// What a menu offers to do to the content of the selected parts: to notes, hits or sound, and with
/// an editor of samples outside the program. Binds the action "editexternal". Interface thread.
class ProcessMenu : public CObject {
public:
    /// Outlives the table of actions' use.
    explicit ProcessMenu(Workspace& workspace);

    void fill(CPopup* popup); ///< nothing without a selection of such parts

private:
    CSeq* seq() const;
    void addEntries(CPopup* popup, const std::vector<ProcessEntry>& entries, bool midi);
    void midiClicked(CObject* sender);
    void audioClicked(CObject* sender);
    void addFitBars(CPopup* popup);
    void fitBarsClicked(CObject* sender);
    void openExternalClicked();
    void openExternalBrowseClicked();
    void openWith(const CStr& program);
    void tell(const CStr& failure) const;

    Workspace& workspace;
    CQV* qv;
};
