#pragma once

#include "gui/CCtrl.h"
#include "modular/AskGraph.h"

#include <functional>

/// An answer about the graph, as sentences with a button each that goes to what is to blame. The
/// arrows choose one, Return goes there. Interface thread.
class AnswerList : public CCtrl {
public:
    std::function<void(CObject* blame)> onGo;

    explicit AnswerList(CWin* win);
    void set(const CStr& asked, GraphAnswer found); ///< `asked` stands above
    void clear();
    bool empty() const { return question.empty(); }
    const GraphAnswer& shownAnswer() const { return answer; }

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    int accessParts() const override { return int(answer.causes.size()); }
    int focusedPart() const override;
    bool pressPart(int part) override;

private:
    struct Row {
        std::vector<CStr> lines;
        CRect area, button; ///< the button is empty where nothing is to blame
    };
    std::vector<Row> rows() const;
    std::vector<CStr> wrapped(const CStr& text) const;

    CStr question;
    GraphAnswer answer;
    int chosen = 0;
};
