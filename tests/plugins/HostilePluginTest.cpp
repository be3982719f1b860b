#include "engine/ValueDoor.h"
#include "plugins/RemoteFixture.h"

#include <csignal>
#include <memory>
#include <xmmintrin.h>

/// What can be contained in one process, and in another: the strip plays on, other strips hear
/// nothing of it, and the project can be saved.
TEST(HostilePlugin, StripsPlayOn) {
    struct Case {
        std::string kind;
        float left, right; ///< of the last frame, for 0.5 and 0.25
        bool faulty;
    };
    std::vector<Case> cases = {
        {"throws-open", 0.5f, 0.25f, false},   {"throws-set", 0.5f, 0.25f, false},
        {"throws-get", 0.5f, 0.25f, false},    {"throws-idle", 0.5f, 0.25f, false},
        {"throws-process", 0.5f, 0.25f, true}, {"nan", 0.0f, 0.25f, true},
        {"infinite", 0.5f, 0.0f, true},        {"overruns", 0.5f, 0.5f, false},
        {"rounding", 0.5f, 0.25f, false},      {"long-texts", 0.5f, 0.25f, false},
        {"throws-chunk", 0.5f, 0.25f, false},  {"echoes", 0.5f, 0.25f, false}};
    const Case ofOthers[] = {
        {"throws-process", 0.5f, 0.25f, true}, {"nan", 0.0f, 0.0f, true},
        {"infinite", 0.0f, 0.0f, true},        {"overruns", 0.5f, 0.5f, false},
        {"rounding", 0.5f, 0.25f, false},      {"long-texts", 0.5f, 0.25f, false},
        {"throws-text", 0.5f, 0.25f, false},   {"throws-state", 0.5f, 0.25f, false}};
    for (const std::string format : {".lv2", ".clap", ".vst3"})
        for (const Case& c : ofOthers)
            // What is thrown from the state of LV2 passes a library that then frees nothing.
            if (format != ".lv2" || c.kind != "throws-state")
                cases.push_back({c.kind + format, c.left, c.right, c.faulty});
    for (size_t i = 0; i < 2 * cases.size(); i++) {
        const Case& c = cases[i / 2];
        SCOPED_TRACE(c.kind + (i % 2 ? ", isolated" : ""));
        RemoteFixture f;
        f.isolates = i % 2 == 1;
        CVST* plug = f.insert("bad-" + c.kind);
        ASSERT_NE(plug, nullptr);
        f.signal->right = [](long) { return 0.25f; };
        f.signal->left = [](long) { return 0.5f; };
        SignalComp* other = f.addSignal();
        f.block(); // which flushes what is next to nothing from now on
        const unsigned mode = _mm_getcsr();
        for (int k = 0; k < 3; k++) {
            f.block();
            f.host->idle();
        }
        EXPECT_EQ(_mm_getcsr(), mode);
        EXPECT_EQ(plug->output()->bufL[255], c.left);
        EXPECT_EQ(plug->output()->bufR[255], c.right);
        EXPECT_EQ(plug->faults > 0, c.faulty);
        EXPECT_EQ(other->output()->bufL[255], 1.0f);
        f.host->values->setParam(plug, 0, 0.5f);
        EXPECT_LE(plug->paramName(0).length(), 255);
        EXPECT_LE(plug->paramText(0).length(), 511); // two of them
        EXPECT_GE(plug->param(0), 0.0f);
        EXPECT_FALSE(f.bytesOf(plug).empty());
    }
}

/// The program handles its signals as before, whatever a plug-in has put in their place.
TEST(HostilePlugin, HandlesNoSignals) {
    PluginFixture f;
    const auto handlerOf = [](int number) {
        struct sigaction now {};
        sigaction(number, nullptr, &now);
        return now.sa_handler;
    };
    const int numbers[] = {SIGSEGV, SIGCHLD, SIGTERM};
    std::vector<void (*)(int)> before, behind;
    for (const int number : numbers) before.push_back(handlerOf(number));
    std::unique_ptr<CVST> plug(f.plug("bad-signals"));
    plug->loaded()->openEditor(0);
    plug.reset();
    for (const int number : numbers) behind.push_back(handlerOf(number));
    EXPECT_EQ(behind, before);
}

/// A plug-in that comes to have more outputs gets channels for them, in a step of its own.
TEST(HostilePlugin, PinsMayChange) {
    PluginFixture f;
    CVST* plug = f.addPlug("gain");
    f.hand(f.seen("gain"), 4, 5);
    f.block();
    f.host->idle();
    f.block();
    EXPECT_EQ(plug->outputs.getCount(), 4); // the pair that was there, and three
    EXPECT_EQ(f.host->undoList.getCount(), 1);
    f.block();
    f.undo();
    EXPECT_EQ(plug->outputs.getCount(), 1);
    f.hand(f.seen("gain"), 4, 100000);
    f.host->idle();
    f.block();
    EXPECT_EQ(plug->outputs.getCount(), 127);
}
