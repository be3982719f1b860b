#pragma once

#include "plugins/Plugin.h"
#include "plugins/remote/PluginHelper.h"

#include <memory>
#include <utility>
#include <vector>

class PluginProcesses;

/// A plug-in that runs in a helper. It goes on standing where its helper dies or hangs: then blocks
/// do without it at once, all that is asked of it is answered by what was heard last, and it comes
/// back in another helper, where who has it gives it its state.
class RemotePlugin final : public Plugin {
public:
    /// Null, with `why`, where that fails. `host` outlives it.
    static std::unique_ptr<RemotePlugin> load(std::shared_ptr<PluginProcesses> processes,
                                              const CStr& path, PluginHost& host, CStr& why);
    ~RemotePlugin() override;

    CStr vendor() override { return facts.vendor; }
    CStr product() override { return facts.product; }
    int32_t uniqueId() const override { return facts.id; }
    bool isInstrument() const override { return has(LoadAnswer::isInstrument); }
    bool sendsMidi() override { return has(canSendMidi); }
    int inputs() const override { return pins(here().inputs); }
    int outputs() const override { return pins(here().outputs); }
    bool stereoPair(bool input, int index) override;
    int latency() const override { return here().latency; }
    int numParams() const override;
    CStr paramName(int index) override;
    CStr paramText(int index) override;
    std::vector<CStr> paramTexts() override;
    void setParam(int index, float share) override;
    float param(int index) override;
    int numPrograms() const override;
    int program() override;
    void setProgram(int index) override;
    CStr programName(int index) override;
    CStr currentProgramName() override;
    void renameProgram(const CStr& name) override;
    bool hasChunks() const override { return has(hasState); }
    Bytes chunk(bool whole) override;
    bool setChunk(const Bytes& data, bool whole) override;
    std::vector<File> files() override;
    void setFile(int index, const CStr& path) override;
    void setRate(double rate) override;
    void setBlock(int frames) override;
    void setRunning(bool on) override;
    void addMidi(int frame, int data) override;
    void begin(float** in, int frames) override;
    bool process(float** in, float** out, int frames) override;
    bool hasEditor() const override { return has(hasWindow); }
    /// Its size is told later, as one that the plug-in asks for.
    CPoint openEditor(unsigned long window) override;
    void closeEditor() override;
    void idleEditor() override {} ///< the helper does
    void idle() override;

    bool missedBlock() const override { return away; }
    bool isolated() const override { return true; }
    bool failed() const override { return phase != Phase::good; }
    CStr whyFailed() const override { return fault; }
    int crashes() const override { return crashCount; }
    int64_t workedNs() const override { return worked; }
    void restart() override;

    int helperProcess() const { return helper ? helper->process() : 0; }

private:
    using Room = PluginHelper::Room;
    using Clock = std::chrono::steady_clock;
    /// Interface thread; `serving` tells those who render.
    enum class Phase { good, lost, loading };
    struct Facts {
        CStr vendor, product;
        int flags = 0; ///< LoadAnswer
        int id = 0;
    };

    RemotePlugin(std::shared_ptr<PluginProcesses> all, const CStr& library, PluginHost& answers);

    PluginRoom& here() const { return *room.loadAcquire(); }
    static float* soundOf(PluginRoom& of) { return reinterpret_cast<float*>(&of + 1); }
    static int pins(int count);
    bool has(int flag) const { return (facts.flags & flag) != 0; }
    bool moveIn(CStr& why);
    void takeRoom();
    HelperMessage loading() const;
    bool takeFacts(const HelperMessage* answer, CStr& why);
    HelperMessage message(HelperCall what, int index = 0, double value = 0.0,
                          std::string bytes = {}) const;
    std::optional<HelperMessage> call(HelperCall what, int index = 0, double value = 0.0,
                                      PluginHelper::Time wait = PluginHelper::patience);
    bool callWhole(HelperCall what, int index = 0, double value = 0.0, std::string bytes = {});
    CStr ask(HelperCall what, int index, std::string& known);

    bool answered() const;
    bool send(float** in, int frames);
    bool await();
    bool turnedAway();
    bool receive(float** out);
    void keepNoteEnds();

    void serveEvents();
    void serve(const PluginRoom::Event& event);
    void watchHelper();
    void lose(const CStr& why, bool guilty);
    void beginAnew();
    void comeBack();
    void keepState();
    void noteMove(int index);
    void forgetMoves();
    std::vector<std::pair<int, float>> movesSince() const;
    void countHours();
    /// An answer that comes only while this lives.
    template <class F>
    PluginHelper::Answer mine(F&& taken);

    const std::shared_ptr<PluginProcesses> processes;
    const CStr path;
    PluginHost& host;
    std::shared_ptr<Room> rooms[2]; ///< a new helper begins in that which the last one has not used
    Shared<PluginRoom*> room{nullptr}; ///< of what was heard last; changes where no block is
    int nextRoom = 0;
    std::shared_ptr<PluginHelper> helper; ///< changes where no block is; null: none
    int number = 0;                       ///< there
    Facts facts;
    Phase phase = Phase::good;
    CStr fault;
    int crashCount = 0;
    bool mayReturn = true;     ///< by itself
    bool answerLoaded = false; ///< it is loaded anew
    unsigned heard = 0;        ///< events of the room
    unsigned long window = 0;  ///< of its editor, while that is open
    const std::shared_ptr<bool> alive = std::make_shared<bool>(true);

    // What was heard last.
    std::map<int, std::string> names, texts, programNames;
    std::string currentName;
    std::vector<File> knownFiles;
    Bytes chunks[2]; ///< of the current program, of all
    Shared<bool> stateOld{false};
    /// A bit for each parameter that has moved since the state was taken.
    Shared<unsigned> movedSince[PluginRoom::mostParams / PluginRoom::wordBits + 1];
    bool stateAsked = false;
    Clock::time_point keptAt{};
    Clock::duration keeping{}; ///< how long that took
    int64_t countedAt = 0;     ///< seconds of the clock of trust
    int countedTrip = 0;

    // Whoever renders.
    Shared<bool> serving{false}, away{false};
    /// Changes that no trip may meet.
    const std::shared_ptr<Shared<int>> wholeCalls = std::make_shared<Shared<int>>(0);
    std::vector<PluginRoom::Midi> notes;
    Shared<int> trip{0};
    bool begun = false, wentOut = false; ///< the trip of the coming `process`
    int sentOut = 0, sentFrames = 0, sentIn = 0;
    int64_t worked = 0;           ///< nanoseconds, of the latest block
    Shared<int64_t> lateSince{0}; ///< of a trip that was not waited for any longer; 0 none
};
