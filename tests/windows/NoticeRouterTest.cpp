#include "ui/NoticeRouter.h"
#include "engine/GraphHold.h"
#include "sequencer/song/CSeq.h"
#include "support/TestHost.h"

namespace {

class NoticeRouterTest : public testing::Test {
protected:
    auto note(const char* name) {
        return [this, name] { told += name; };
    }
    std::string served() {
        told.clear();
        router.serve();
        return told;
    }

    TestHost test;
    CQV* host = test.host;
    NoticeRouter router{host};
    std::string told;
};

} // namespace

/// Once for all that a subscriber asked for, in their order.
TEST_F(NoticeRouterTest, TellsWhoAskedOncePerRound) {
    auto* seq = new CSeq(host);
    seq->init();
    {
        const GraphHold hold(host);
        host->comps.add(seq);
    }
    const NoticeLink links[] = {
        router.on({.host = HostNotice::graph | HostNotice::peaks, .song = SeqNotice::parts},
                  note("song ")),
        router.on({.host = HostNotice::graph}, note("bar ")),
        router.on({.song = SeqNotice::transport}, note("locators "))};
    served();
    EXPECT_EQ(served(), "");
    host->hostNotices.raise(HostNotice::graph | HostNotice::peaks | HostNotice::folders);
    seq->songNotices.raise(SeqNotice::parts);
    EXPECT_EQ(served(), "song bar ");
    EXPECT_EQ(served(), "");
    EXPECT_TRUE(host->hostNotices.raised(HostNotice::folders)) << "nobody asked";
    seq->songNotices.raise(SeqNotice::transport);
    EXPECT_EQ(served(), "locators ");
}

/// Windows come and go while they are told.
TEST_F(NoticeRouterTest, SubscriptionsEndAndBeginInMidRound) {
    NoticeLink second, third;
    const NoticeLink first = router.on({.host = HostNotice::graph}, [&] {
        told += "first ";
        second.reset();
        if (!third) third = router.on({.host = HostNotice::graph}, note("third "));
        if (told == "first ") host->hostNotices.raise(HostNotice::graph);
    });
    second = router.on({.host = HostNotice::graph}, note("second "));
    host->hostNotices.raise(HostNotice::graph);
    EXPECT_EQ(served(), "first ");
    EXPECT_EQ(served(), "first third ") << "and what the call had raised";
}
