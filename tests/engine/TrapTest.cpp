#include "support/RtTrap.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

namespace {

/// Does something forbidden in its `process`.
class CNaughty : public CComp {
public:
    explicit CNaughty(CQV* root) : CComp(root) {}
    void init() override { outputs.add(new COutputChannel(this)); }
    void process(int) override {
        if (allocate) delete new volatile int(1);
    }
    bool allocate = false;
};

} // namespace

/// Else the tests that look for violations could not fail.
TEST(RtTrap, CatchesAllocationInTheCallbackOnly) {
    if (!rtTrapActive()) GTEST_SKIP() << "the sanitizers lead these calls through themselves";
    TestHost t;
    auto* c = t.add(new CNaughty(t.host));
    t.connect(c);
    rtReset();
    t.run();
    EXPECT_EQ(rtViolations(), 0);
    c->allocate = true;
    t.run();
    EXPECT_EQ(rtViolations(), 2) << "one for new, one for delete";
    rtReset();
}
