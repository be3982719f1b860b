#include "EditScenario.h"

namespace {

constexpr int blockFrames = 64;

/// A playing graph with three paths, to device channels of their own, that no edit touches: a late
/// source, one through inserts and a group, and a bus that both of them send to.
class Studio : public StripFixture {
public:
    Studio() : StripFixture(blockFrames), late(add(new SignalComp(host))) {
        auto* grouped = add(new SignalComp(host));
        auto* group = add(new CGroupCh(host));
        late->latency = 100;
        for (SignalComp* s : {late, grouped}) {
            const long prime = s == late ? 7919 : 6007;
            s->left = [prime](long at) { return float(at * prime % 1009) / 2048; };
            s->right = [prime](long at) { return float(at * prime % 997) / -2048; };
            addInsert(s->output(), new GainComp(host, 0.75f));
        }
        bus = addBus();
        delete connect(bus); // away from the out
        connect(grouped, group);
        int device = 0;
        for (CComp* c : std::initializer_list<CComp*>{late, group, bus}) {
            auto* own = add(new CAudioOut(host));
            device += 2;
            own->channelUsed[device] = own->channelUsed[device + 1] = 1;
            connect(c, own);
        }
        late->output()->sendLevels[0]->level = 0.5f;
        grouped->output()->sendLevels[0]->level = 0.25f;
        host->start();
    }
    /// One block; what the three paths play joins `heard`, unless the graph was not free.
    void play() {
        float buffers[deviceChannels][blockFrames];
        float* outs[deviceChannels];
        std::copy(std::begin(buffers), std::end(buffers), outs);
        const long before = late->at;
        libio(nullptr, outs, 0, deviceChannels, blockFrames, nullptr, 0);
        if (late->at > before)
            heard.insert(heard.end(), buffers[2], buffers[deviceChannels - 1] + blockFrames);
    }

    CGroupCh* bus;
    std::vector<float> heard;

private:
    static constexpr int deviceChannels = 8;
    SignalComp* late;
};

/// Against what the paths play without edits.
void expectUndisturbed(const std::vector<float>& heard) {
    Studio studio;
    while (studio.heard.size() < heard.size()) studio.play();
    EXPECT_GT(heard.size(), 0u);
    EXPECT_TRUE(heard == studio.heard) << "an edit was heard";
}

Studio* pumped = nullptr; ///< plays on where an edit waits for the graph

} // namespace

/// A thousand edits of every kind between the blocks, with some taken back on the way: paths that
/// they don't touch play on bit for bit, and every state that is reached again is the one that was
/// left.
TEST(Rewiring, LeavesOtherPathsAloneAndLeadsBackToEachState) {
    std::vector<float> heard;
    {
        Studio studio;
        pumped = &studio;
        messageHooks().pumpIdle = [] { pumped->play(); };
        EditScenario scenario(studio.host, studio.bus, 1);
        std::mt19937 random(1);
        std::vector<std::string> states = {scenario.dump()};
        const auto now = [&] { return size_t(studio.host->undoIndex + 1); };
        const auto turn = [&](void (UndoHost::*click)(CObject*)) {
            (studio.host->*click)(nullptr);
            studio.play();
            ASSERT_EQ(scenario.dump(), states[now()]) << "at step " << now();
        };
        rtReset();
        for (int i = 0; i < 1000 && !testing::Test::HasFatalFailure(); ++i) {
            for (unsigned n = random() % 8; n < 3; ++n) turn(&UndoHost::undoClicked);
            for (unsigned n = random() % 8; n < 2; ++n) turn(&UndoHost::redoClicked);
            scenario.edit();
            studio.play();
            if (now() < size_t(studio.host->undoList.getCount())) continue; // nothing to be done
            states.resize(now());
            states.push_back(scenario.dump());
        }
        while (studio.host->undoIndex >= 0) turn(&UndoHost::undoClicked);
        while (now() + 1 < states.size()) turn(&UndoHost::redoClicked);
        messageHooks().pumpIdle = nullptr;
        EXPECT_EQ(rtViolations(), 0) << "a task allocates, frees or locks";
        heard = studio.heard;
    }
    expectUndisturbed(heard);
}

/// The same with blocks on a thread of their own.
TEST(Rewiring, GoesOnWhileAnotherThreadRunsBlocks) {
    std::vector<float> heard;
    {
        Studio studio;
        EditScenario scenario(studio.host, studio.bus, 3);
        const std::string atStart = scenario.dump();
        {
            const BlockThread audio([&] {
                studio.play();
                std::this_thread::sleep_for(std::chrono::microseconds(200)); // as between real ones
            });
            std::mt19937 random(4);
            for (int i = 0; i < 300; ++i) {
                scenario.edit();
                for (unsigned n = random() % 3; n > 0; --n) studio.host->undoClicked();
                if (random() % 3 == 0) studio.host->redoClicked();
                if (random() % 8 == 0) studio.host->idle();
            }
            studio.host->settle();
        }
        while (studio.host->undoIndex >= 0) studio.undo();
        EXPECT_EQ(scenario.dump(), atStart);
        heard = studio.heard;
    }
    expectUndisturbed(heard);
}
