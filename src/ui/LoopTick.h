#pragma once

#include <memory>

class CApp;
class CWin;

/// Serves `loopCalls` in the loop of the program's windows, while this stands and somebody has
/// calls. Interface thread.
class LoopTick {
public:
    LoopTick(CApp* app, CWin* window); ///< both outlive it
    ~LoopTick();
    LoopTick(const LoopTick&) = delete;
    LoopTick& operator=(const LoopTick&) = delete;

private:
    class Tick;
    std::unique_ptr<Tick> tick;
};
