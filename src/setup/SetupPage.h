#pragma once

#include "gui/CGroup.h"

class CButton;
class CLabel;
class CQV;
class CSetupWin;

/// A page of the setup: sections of fields from top to bottom, each behind its label. It reads what
/// it shows when it is made, and is made anew when that changes. Interface thread.
class SetupPage : public CGroup {
public:
    static constexpr int margin = 16, gap = 8; ///< around the page and between fields
    static constexpr int fieldHeight = 24, labelWidth = 136;

    SetupPage(CSetupWin* window, CRect place);

protected:
    /// Begins a section.
    void addHeading(const CStr& text);
    /// Puts a field on the next line, behind its label, or at the left when that is empty.
    template <class C>
    C* addField(const CStr& label, C* field) {
        placeField(label, field);
        return field;
    }
    /// Puts it behind the last field, on the same line.
    template <class C>
    C* addBeside(C* field) {
        placeBeside(field);
        return field;
    }
    /// Text behind the last field, up to the right edge.
    CLabel* addNote(const CStr& text);
    /// Two fields with their headings side by side, down to the bottom of the page. They keep that
    /// place when the page grows.
    void addPair(const CStr& leftText, CCtrl* first, const CStr& rightText, CCtrl* second);
    /// A button that is as wide as its text needs, on no line yet.
    CButton* newButton(const CStr& text, COnChange* clicked);

    int nextTop = margin;   ///< of the line that follows
    CSetupWin* const setup; ///< shows this page
    CQV* const qv;

private:
    CLabel* placeHeading(const CStr& text, int x);
    void placeField(const CStr& label, CCtrl* field);
    void placeBeside(CCtrl* field);

    int besideLeft = margin, lineTop = margin;
};
