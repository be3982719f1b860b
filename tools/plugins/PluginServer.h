#pragma once

#include "base/Atomic.h"
#include "plugins/remote/MessageSocket.h"
#include "plugins/remote/PluginRoom.h"
#include "plugins/remote/SharedPages.h"
#include "tools/plugins/ServedPlugin.h"

#include <map>
#include <memory>
#include <mutex>

/// Runs plug-ins for another process: does what that asks through a socket, and makes the trips
/// that it rings for on a thread of its own.
class PluginServer {
public:
    PluginServer(int socketFile, int roomFile);
    ~PluginServer() = delete; ///< it runs until the process ends

    /// Until the other end is gone.
    void run();

private:
    void serve(const HelperMessage& message);
    void answer(const HelperMessage& call, int index, std::string bytes = {}, double number = 0.0);
    void load(const HelperMessage& message);
    void unload(int number);
    void serve(const HelperMessage& message, ServedPlugin& served);
    void idle();
    int pauseMs() const;

    void makeTrips();
    int nextTrip(unsigned place);
    void sleep(unsigned place);
    void followSchedule();

    MessageSocket socket;
    SharedRoom<HelperRoom> room;
    std::map<int, std::unique_ptr<ServedPlugin>> plugins; ///< by number; changed in `trips`
    std::mutex trips;                                     ///< somebody looks one of them up
    int policy = 0, priority = 0;                         ///< of the thread of the trips
};
