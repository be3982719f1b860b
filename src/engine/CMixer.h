#pragma once

#include "engine/CComp.h"

class BlockView;
class CMixScene;

/// A choice of the sections that the mixer shows.
class CMixProg : public CProgram {
public:
    CMixProg();
    /// Bit mask of shown sections: inputs, tracks and instruments, groups, sends, outputs.
    Stored<int> sh{31};

    /// A program of the same name, owned by the caller.
    CMixProg* copy() const;
};

/// What a project keeps of the mixer view. Held by whoever shows or saves it; no part of the graph.
class CMixer : public CComp {
public:
    int mxv = 7;              ///< flags of the view
    ListOf<CMixScene> scenes; ///< owned

    explicit CMixer(CQV* root);
    ~CMixer() override;
    CMixer(const CMixer&) = delete;
    CMixer& operator=(const CMixer&) = delete;

    void init() override;
    void clear() override;
    /// Up to the first item that is empty or does not fit.
    void read(CStream* stream, int end) override;
    void write(CStream* stream) override;
    /// -1 means the current one; null outside the list.
    ListView<CMixProg> programs() const;
    CMixProg* getProg(int index);
    CStr getProgName(int index) override;
    /// Keeps the current program within the list.
    void perform(CUndoItem* item, int op) override;

    // What the user does to the programs; each a step of the history, carried out on return.
    void addProg();       ///< of all sections; it becomes the current one
    void duplicateProg(); ///< the current one, as the current one
    void deleteProg();    ///< the current one, unless it is the last
    void renameProg(const CStr& name);

    // The same for scenes, of which null is none.
    CMixScene* sceneAt(int index) const;
    void addScene();                    ///< of how the strips are set now
    void updateScene(CMixScene* scene); ///< to how they are now
    void deleteScene(CMixScene* scene);
    void renameScene(CMixScene* scene, const CStr& name);
    /// Scenes that were read find their strips, once all of the project is there.
    void bindScenes();

private:
    void insertProg(CMixProg* prog, const CStr& title);
    void readItem(BlockView& item, const CStr& name);
};
