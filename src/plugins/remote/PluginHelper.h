#pragma once

#include "plugins/remote/MessageSocket.h"
#include "plugins/remote/PluginRoom.h"
#include "plugins/remote/SharedPages.h"

#include "base/CStr.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

/// A process that runs plug-ins for this one. It ends with this, or with the program. Interface
/// thread, but where told.
class PluginHelper {
public:
    using Room = SharedRoom<PluginRoom>;
    /// Gets an answer; null: there will be none.
    using Answer = std::function<void(const HelperMessage*)>;
    using Time = std::chrono::milliseconds;
    /// The interface does not wait longer for an answer. Who has not answered by the other time
    /// hangs, and is ended.
    static constexpr Time patience{300}, hangs{2000}, loadHangs{10000};

    /// Null where the program does not start.
    static std::shared_ptr<PluginHelper> start(const CStr& program);
    ~PluginHelper();
    PluginHelper(const PluginHelper&) = delete;
    PluginHelper& operator=(const PluginHelper&) = delete;

    HelperRoom& room() const { return **shared; }
    /// Any thread: its process has come to its end.
    bool gone() const { return dead.loadAcquire(); }
    CStr why() const; ///< it is gone
    void end();       ///< at once
    /// Ends it, as a plug-in does not come back, from a trip or a call.
    void endHanging(bool inTrip);
    int process() const { return pid; }

    /// Takes in a plug-in: its number, from 1; 0 when there are too many.
    int join(std::shared_ptr<Room> of);
    void leave(int number);
    /// The plug-in at which it has died; 0 if that is not known.
    int culprit() const;
    /// A plug-in has a trip before it. Any thread.
    void ring(int number);

    /// Gives the turn of the call.
    unsigned post(HelperMessage message, Answer answer = {}, Time limit = hangs);
    /// Posts it and waits; nothing where the answer does not come in time, or is not to be waited
    /// for because an earlier one has not come in time.
    std::optional<HelperMessage> call(HelperMessage message, Time wait = patience);
    /// Until a call has got its answer; false if it has not come in time.
    bool waitFor(unsigned turn, Time wait);
    void poll(); ///< serves answers that have come

private:
    using Clock = std::chrono::steady_clock;
    using HelperShare = SharedRoom<HelperRoom>;
    struct Pending {
        Answer answer;
        Clock::time_point until;
        bool late = false; ///< somebody has waited in vain
    };

    PluginHelper(int process, int socketEnd, std::unique_ptr<HelperShare> made);
    void watch();
    void take(const HelperMessage& message);
    void giveUp(); ///< no call that is open gets an answer
    void followSchedule();

    const std::unique_ptr<HelperShare> shared;
    MessageSocket socket;
    const int pid;
    Shared<bool> dead{false}, scheduled{false};
    bool hung = false;
    int hungAt = 0; ///< number of the plug-in
    int status = 0; ///< of its end
    unsigned turns = 0;
    std::map<unsigned, Pending> pending; ///< by turn
    std::mutex guard;                    ///< of the rooms
    std::map<int, std::shared_ptr<Room>> rooms;
    std::thread watcher; ///< sleeps until the process ends
};
