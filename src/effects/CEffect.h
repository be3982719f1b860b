#pragma once

#include "effects/EffectKinds.h"
#include "engine/CComp.h"
#include "engine/KeyInput.h"
#include "engine/Macros.h"

class CFX;

/// A program of the rack: a chain of effects, in the order in which they sound.
class CEffectProg : public CProgram {
public:
    ListOf<CFX> effects; ///< owned

    CEffectProg();
    ~CEffectProg() override;
    CEffectProg(const CEffectProg&) = delete;
    CEffectProg& operator=(const CEffectProg&) = delete;
};

/// The rack, "Multi Effect": stereo in, stereo out, through the chain of its current program. Off,
/// it passes the input on. `wet` is applied by the strip that it is an insert of; a rack that
/// stands on its own ignores it.
///
/// Once the rack is linked, its programs and their effects come by `addProg` and `addEffect`, leave
/// by `CUndo::asRemove` and change places by `asMove`, all in a step about this rack: the lists are
/// `progs` and `effects` of a program. Settings of an effect may change at any time.
class CEffect : public CComp, public Keyed, public StyledMacros {
public:
    static constexpr int ownType = compEffect;

    explicit CEffect(CQV* root);

    void setFrames(int frames) override;
    void setRate(double rate) override;
    void planRender(PlanBuilder& plan) override; ///< audio first
    void process(int frames) override;
    void start() override;
    /// That of the effects that are on in the current program.
    int getDelay() override;
    void idle() override;
    /// `paramPower`, `paramWet` and those of RackParams.h; `numParams` does not count them.
    void setParam(int index, ToStore<float> value) override;
    void listParam(int index, std::vector<StoredValue>& parts) override;
    CStr paramName(int index) override;
    CStr paramText(int index) override;
    const ParamUnit* paramUnit(int index) override;
    float param(int index) override;
    /// Keeps the current program current, or takes that which has just arrived.
    void perform(CUndoItem* item, int op) override;
    /// Replaces the programs at once, for a rack that no step of the history names: a new one, or
    /// one of a project that is being loaded. Interface thread.
    void read(CStream* stream, int end) override;
    void write(CStream* stream) override;
    void init() override; ///< comes up with one delay
    CComp* copy() override;
    CStr getProgName(int index) override;
    void setProgName(int index, const CStr& name) override;

    /// What its compressors and gates follow. A project stores it, other files do not.
    CKeyInput& keyInput() override { return key; }
    bool followsKey() const override; ///< in the current program
    std::optional<MacroStyle> macroStyle(int macro) override;
    void createIO();
    ListView<CEffectProg> programs() const;
    CEffectProg* getProg(); ///< the current one, or null
    /// The next block begins as the switch stands, without a fade. Graph holder.
    void restart() { heard = -1.0f; }
    /// Runs the chain over `frames` frames from `offset` on. Graph holder.
    void subProcess(int frames, int offset);
    /// Whether a parameter event is for this rack.
    void doMapping(const CMIDIBytes* event);

    /// A program named after the one effect in it, by a step that makes it current, or, without
    /// one, at once at the end of the list. Interface thread.
    CEffectProg* addProg(int kind, CUndo* step = nullptr);
    CEffectProg* addDelay(CUndo* step = nullptr) { return addProg(fxDelay, step); }
    CEffectProg* addReverb(CUndo* step = nullptr) { return addProg(fxReverb, step); }
    CEffectProg* addChorus(CUndo* step = nullptr) { return addProg(fxChorus, step); }
    CEffectProg* addPhaser(CUndo* step = nullptr) { return addProg(fxPhaser, step); }
    CEffectProg* addBitCrusher(CUndo* step = nullptr) { return addProg(fxBitcrusher, step); }
    CEffectProg* addFilter(CUndo* step = nullptr) { return addProg(fxFilter, step); }
    CEffectProg* addCompressor(CUndo* step = nullptr) { return addProg(fxCompressor, step); }
    CEffectProg* addGuitarAmp(CUndo* step = nullptr) { return addProg(fxGuitarAmp, step); }
    /// An effect at place `index` of a program's chain, -1 for the end, by a step.
    CFX* addEffect(CEffectProg* prog, int kind, CUndo* step, int index = -1);

    void saveProg(CStream* stream, CEffectProg* prog);
    /// Replaces the programs by those of a file, as one undoable step. A file without any changes
    /// nothing. Interface thread.
    void openProg(const CStr& path);
    void openFromStream(CStream* stream);

private:
    CKeyInput key{this};
    MacroLooks looks;
    int declaredDelay = 0; ///< that the delay compensation was last asked for
    /// How much of the chain is heard: 1 on, 0 off, between them while one fades to the other;
    /// below 0 before the first block.
    float heard = -1.0f;

    template <class F>
    void eachEffect(F&& visit);
    void fade(float to, int frames, int offset);
    void giveKey(CFX& fx, int offset) const;
    bool runChain(const CEffectProg& prog, int frames, int offset);
};
