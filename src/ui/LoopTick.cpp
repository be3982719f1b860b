#include "ui/LoopTick.h"

#include "engine/LoopCalls.h"
#include "gui/CApp.h"
#include "gui/CCtrl.h"

namespace {

constexpr int tickMs = 10; ///< the shortest timer that one may ask for

} // namespace

class LoopTick::Tick : public CCtrl {
public:
    Tick(CApp* application, CWin* owner) : CCtrl(owner, "timers", 0, 0, 0, 0), app(application) {
        visible = false;
    }
    void begin() { app->addTimer(this, tickMs, true); }
    void onTimer() override {
        loopCalls().serve();
        if (loopCalls().empty()) app->killTimer(this);
    }

private:
    CApp* app;
};

LoopTick::LoopTick(CApp* app, CWin* window) : tick(std::make_unique<Tick>(app, window)) {
    loopCalls().onWanted = [this] { tick->begin(); };
    if (!loopCalls().empty()) tick->begin();
}

LoopTick::~LoopTick() {
    loopCalls().onWanted = nullptr;
}
