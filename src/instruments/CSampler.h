#pragma once

#include "base/Ring.h"
#include "common/fx/EchoLine.h"
#include "engine/CComp.h"
#include "engine/Macros.h"
#include "instruments/CSynthProg.h"
#include "instruments/CVoice.h"
#include "instruments/SustainPedal.h"

#include <memory>

class CSampleClip;
class CStream;
class CUndo;
class SamplerContent;

/// The built-in instrument: a MIDI input, a stereo output, a list of programs of which the current
/// one sounds, and 64 voices that all of its sounds share.
class CSampler : public CComp, public StyledMacros {
public:
    static constexpr int ownType = compSampler;

    static constexpr int voiceCount = 64;
    static constexpr int controllers = 128;
    static constexpr int optionBytes = 32;

    unsigned char held[128] = {};            ///< without a reader
    ListOf<CSampleClip> clips;               ///< owned: all that the programs play
    CVoice voices[voiceCount];               ///< graph holder
    unsigned char options[optionBytes] = {}; ///< the editor's; stored
    Ring<int, CMIDIQ::capacity> guiQueue;    ///< packed messages from the interface thread
    int progChange = -1;                     ///< without a reader
    Shared<float> paramValues[controllers];  ///< last value of each automation parameter
    Stored<int> mch{-1};                     ///< MIDI channel that is heard, -1 all
    Shared<bool> frozen{false};              ///< in this block a file plays in its place

    explicit CSampler(CQV* root);
    ~CSampler() override;
    CSampler(const CSampler&) = delete;
    CSampler& operator=(const CSampler&) = delete;

    void afteridle() override;
    void start() override; ///< draws what it drew at the start before
    void setFrames(int frames) override;
    void setRate(double rate) override;
    void process(int frames) override;
    /// One parameter per MIDI controller; each sound has its own map of what that moves.
    int numParams() override { return controllers; }
    void setParam(int index, ToStore<float> value) override;
    void listParam(int index, std::vector<StoredValue>& parts) override;
    std::optional<MacroStyle> macroStyle(int macro) override; ///< of the current program
    CStr paramName(int index) override; ///< what it moves, else the number of the controller
    CStr paramText(int index) override;
    const ParamUnit* paramUnit(int index) override;
    float param(int index) override;
    // Macros are those of the current program; its names for them stay as they are.
    int getMacroParam(int index) override;
    void setMacroParam(int index, int param) override;
    void perform(CUndoItem* item, int op) override;
    /// Voices of the program before go on.
    void setProg(ToStore<int> index) override;
    /// Replaces programs, clips and options by those of a block. Interface thread.
    void read(CStream* stream, int end) override;
    void write(CStream* stream) override;
    void init() override;
    void createChannels() override;
    CComp* copy() override;
    void del(CObject* object) override;
    int freezed(COutputChannel* channel) override;
    CStr getProgName(int index) override;
    void setProgName(int index, const CStr& name) override;
    /// See FactoryPrograms.h. Without `undo` the program is linked at once.
    int factoryProg(CUndo* undo, int index, CStr& name, bool build) override;

    ListView<CSynthProg> programs() const { return listAs<CSynthProg>(progs); }
    CSynthProg* getProg(); ///< the current one, or null
    CLayer* getLayer();    ///< its current layer, or null

    /// Takes a voice for a note of a sound; null when there is none, or a voice of a mono sound
    /// takes the note over. `midiData` is a note-on. Graph holder, as all down to `muteSound`.
    CVoice* addVoice(CSound* sound, int midiData, unsigned char group);
    void doMapping(CMIDIBytes* event);
    void render(int frames, int offset);
    void subProcess(int frames, int offset);
    void allNotesOff(); ///< ends all voices at once
    void muteSound(CSound* sound);

    /// A program of one default synthesizer sound, owned by the caller.
    CSynthProg* createProg();
    /// A program, owned from now on, comes to the end of the list by a step, and is current then.
    void addProg(CUndo* undo, CSynthProg* prog);

    // Files. Interface thread.
    /// Writes a program; `clipList` gives its clips their numbers.
    void saveProg(CStream* stream, CSynthProg* prog, const CList& clipList);
    /// Writes one program as a file, with the first clip of each sample sound.
    void writeToStream(CStream* stream, CSynthProg* prog);
    /// Adds the programs of a file behind those there are, as one undoable step, and makes the
    /// first of them current.
    void openFromStream(CStream* stream);
    void openBank(const CStr& path);
    /// Adds the presets of a SoundFont as programs, by `undo` if there is one. False after a
    /// message: the file cannot be read, or has more sounds than a sampler takes, which are left
    /// out.
    bool openSF2(const CStr& path, CUndo* undo);

    /// Keys of the on-screen piano, 128 counts each: those let go, then those pressed. Interface
    /// thread; keys that find the queue full are lost.
    void pianoKeys(const int* released, const int* pressed);

    /// Memory of the echoes, `CDelay::bufferFrames` long, shared by all programs.
    EchoLine* delayLine(int side) { return &delays[side]; }

private:
    EchoLine delays[2];
    SustainPedal pedal;

    void complain(const SamplerContent& content);
    void takeGuiKeys();
    bool hears(const CMIDIBytes& event) const;
    void movePedal(int data);
    void noteOff(int note);
    void noteOn(CSound* sound, int data);
    int findVoice(CSound* sound, unsigned char group, CVoice*& previous);
    void legato(CVoice* voice, int note);
    void startVoice(CVoice* voice, CSound* sound, int data, unsigned char group);
    void cutVoices();
    int gather(int from, CVoice** found);
    struct SoundSum;
    void mixSound(const SoundSum& sum, int frames, int offset);
    int strideLeft = 0; ///< frames of the stride from the start of this block on
    void muteAll(CObject* object);
};
