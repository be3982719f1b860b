#pragma once

#include "plugins/PluginComp.h"
#include "plugins/PluginIdentity.h"
#include "plugins/PluginState.h"
#include "plugins/vst2/BankFiles.h"

#include <vector>

/// A plug-in of any format, "VST" until one is opened. A project keeps its file, its state, and,
/// where the file cannot be loaded, all that it had of it, byte for byte. Interface thread.
class CVST : public PluginComp {
public:
    static constexpr int ownType = compVST;

    CStr fileName;  ///< which plug-in, as in `PluginFile`; empty at first
    CStr chunkPath; ///< of the bank that the user opened last

    explicit CVST(CQV* root);

    /// Opens the plug-in that `fileName` stands for, after a look in the folders, and names the
    /// component after it. With `setup` it gets channels. False when that fails, with `setup` after
    /// a message: what a project misses its reader tells.
    bool open(bool setup);
    /// For a component whose plug-in was not found: opens the one in this file with what the
    /// project had of it. In the graph.
    bool locate(const CStr& path);

    /// Puts another plug-in, named as in `PluginFile`, in the place of this one, as a step: it gets
    /// the values of the parameters that have the same names. False, and it stays as it is, after a
    /// message.
    bool become(const CStr& path);

    /// The same for one that was not found: another format of it, which gets what the project tells
    /// of its parameters. With the step it is missing again, with all that the project had.
    bool becomeMissing(const CStr& path);
    /// What was told of the plug-in that was not found; not known where nothing was.
    PluginIdentity missing() const;

    /// Loads it anew, where it is to run now, with its state. False, and it stays as it is, where
    /// that fails.
    bool reload();

    void clear() override;
    void idle() override;
    void perform(CUndoItem* item, int op) override;
    void read(CStream* stream, int end) override;
    void write(CStream* stream) override;
    CComp* copy() override;

    /// Gives it one of the files that it works with (see `Plugin::files`), as a step.
    void giveFile(int index, const CStr& path);

    // Banks (.fxb) and programs (.fxp). Opening one is a step. False after a message.
    bool openBank(const CStr& path);
    bool openProgram(const CStr& path);
    bool saveBank(const CStr& path);
    bool saveProgram(const CStr& path);
    void saveFXPToStream(CStream* stream); ///< nothing without a plug-in

    // The state as a file of its format (see StateFiles.h), without messages. False where there is
    // none, or it is another plug-in's.
    bool saveState(const CStr& path);
    bool takeState(const CStr& path); ///< no step: for one that is linked nowhere yet

protected:
    void readPrograms(Plugin& made) override { bank.takeAll(made); }
    void leavesProgram(Plugin& left) override { bank.takeCurrent(left); }
    void keepState() override { lost = present(); }
    void giveState() override { restore(lost); }

private:
    PluginState::Bytes present();
    void stepTo(const CStr& name, PluginState::Bytes before);
    void loseAgain(const CStr& file, std::vector<unsigned char> content);
    void restore(const PluginState::Bytes& bytes);
    std::unique_ptr<Plugin> make(const CStr& path);
    bool load(const CStr& path);
    bool exchange(const CStr& path);
    bool find();
    void readBlock(const CStr& name, CStream& body, int size, bool& sawBank);
    void readProgramNumber(int index);
    void readState(CStream& body, WordOrder order, const char* block);
    template <class F>
    bool readFile(const CStr& path, F&& reader);
    template <class F>
    bool writeFile(const CStr& path, F&& writer);

    ProgramBank bank;
    PluginState state;               ///< of the plug-in, as far as a step has to do with it
    Shared<bool> stateAsked{false};  ///< the plug-in does not have it yet
    PluginState::Bytes lost;         ///< state of a plug-in that has failed
    std::vector<unsigned char> kept; ///< the content of a project, while the plug-in is missing
};

/// Whether a component is a plug-in whose process has ended.
bool isFailedPlugin(const CComp* comp);

/// What a plug-in costs, how often its process has crashed and how often it gave what cannot be
/// played, in a few words; empty for another component.
CStr pluginHealth(const CComp* comp);
/// The same of what is summed up.
CStr healthText(float load, int crashes, unsigned faults = 0);

/// A component of a plug-in, named as in `PluginFile`, with channels, ports and buffers, linked
/// nowhere; null, after a message, where it cannot be opened.
std::unique_ptr<CVST> newPlugin(CQV* host, const CStr& path);
