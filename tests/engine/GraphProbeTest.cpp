#include "engine/plan/GraphProbe.h"
#include "engine/StripFixture.h"

namespace {

class Late : public SignalComp {
public:
    explicit Late(CQV* root) : SignalComp(root) { latency = 441; }
};

} // namespace

/// The answer comes with a block, and tells of each cable how late it is and how long it waits, and
/// of each component what it costs.
TEST(GraphProbe, TellsDelaysAndWorkAsOfABlock) {
    StripFixture t(64);
    SignalComp* early = t.addSignal();
    auto* late = t.add(new Late(t.host));
    t.connect(late);
    t.run(20);
    GraphProbe probe(t.host);
    EXPECT_FALSE(probe.take()) << "nothing was asked";
    probe.ask();
    EXPECT_FALSE(probe.take()) << "no block has come";
    t.run(1);
    ASSERT_TRUE(probe.take());
    EXPECT_FALSE(probe.take()) << "an answer comes once";
    CComp* out = t.host->getAudioOut();
    const auto delay = [&](CComp* from) {
        return probe.delayOf(getAudioCable(out, from->output(), nullptr));
    };
    EXPECT_EQ(delay(late).path, 441);
    EXPECT_EQ(delay(late).added, 0);
    EXPECT_EQ(delay(early).path, 0);
    EXPECT_EQ(delay(early).added, 441);
    EXPECT_GT(probe.workOf(early).mean, 0.0f);
    EXPECT_GE(float(probe.workOf(early).worst), 1.0f);
    EXPECT_NEAR(probe.blockNs(), 64 / 44100.0 * 1e9, 1.0);
}

/// A question whose asker is gone by the time of the answer harms nobody.
TEST(GraphProbe, MayBeGoneBeforeTheAnswer) {
    StripFixture t(64);
    t.addSignal();
    {
        GraphProbe probe(t.host);
        probe.ask();
    }
    t.run(2);
    EXPECT_EQ(t.host->tasks->count(), 0);
}
