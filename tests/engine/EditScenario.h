#pragma once

#include "StripFixture.h"

#include <random>
#include <string>

/// Content that a step may swap whole.
class Content : public CUndoContent {
public:
    Shared<std::vector<int>*> values{new std::vector<int>};
    ~Content() override { delete values.load(); }
    void listWords(CUndoContent* other, WordChanges& words) override {
        words.exchange(values, static_cast<Content*>(other)->values);
    }
};

/// Makes random edits of every kind, each as one step of undo, and tells the graph as text. They
/// are about the components that it adds itself.
class EditScenario {
public:
    /// `foreign` is a bus that is moved, but neither fed nor removed.
    EditScenario(CQV* root, CGroupCh* foreign, unsigned seed)
        : host(root), out(root->getAudioOut()), foreignBus(foreign), random(seed) {}

    /// One step, left to the next block to be carried out.
    void edit();
    /// All that a step may change. With the graph.
    std::string dump() const;

private:
    void editList(CUndo* u, CList* list);
    void toggleCable(CUndo* u, bool audio);
    void changeValues(CUndo* u);

    int below(int n) { return n > 0 ? int(random() % unsigned(n)) : 0; }
    /// One of its own in a list, or the foreign bus; null for none.
    CComp* anyOf(const CList* list);
    COutputChannel* anyStrip();
    CComp* newFor(const CList* list);

    CQV* host;
    CComp* out;
    CGroupCh* foreignBus;
    Content content;
    void* pointer = nullptr; ///< a field that steps exchange
    std::mt19937 random;
    int serial = 0;
};
