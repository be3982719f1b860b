#pragma once

#include "StripFixture.h"
#include "base/Numbers.h"

#include <random>
#include <string>

/// Content that a step may swap whole.
class Content : public CUndoContent {
public:
    std::vector<int> values;
    void swapContent(CUndoContent* other) override {
        values.swap(static_cast<Content*>(other)->values);
    }
};

/// Makes random edits of every kind, each as one step of undo, and tells the graph as text. They
/// are about the components that it adds itself, and the audio out that comes first.
class EditScenario {
public:
    EditScenario(CQV* root, unsigned seed) : host(root), out(root->getAudioOut()), random(seed) {}

    CGroupCh* foreignBus = nullptr; ///< is moved, but neither fed nor removed
    Content content;
    void* pointer = nullptr; ///< a field that steps exchange

    /// One step; the caller has it carried out.
    void edit();
    /// All that a step may change. With the graph.
    std::string dump() const;

private:
    using Edit = void (EditScenario::*)(CUndo*);

    void addComponent(CUndo* u);
    void removeComponent(CUndo* u);
    void moveComponent(CUndo* u);
    void toggleAudio(CUndo* u);
    void toggleMIDI(CUndo* u);
    void addSend(CUndo* u);
    void removeSend(CUndo* u);
    void moveSend(CUndo* u);
    void addInsert(CUndo* u);
    void moveInsert(CUndo* u);
    void removeInsert(CUndo* u);
    void changeValues(CUndo* u);
    void swapContent(CUndo* u);

    int below(int n) { return n > 0 ? int(random() % unsigned(n)) : 0; }
    CComp* anyComp(bool device);
    COutputChannel* anyChannel();
    void record(CUndo* u, CComp* c, CList* list);

    CQV* host;
    CComp* out;
    std::mt19937 random;
    int serial = 0;
};
