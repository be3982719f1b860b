#include "base/Messages.h"

#include "TempFolder.h"
#include "base/Numbers.h"

#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

std::vector<std::string>& shown() {
    static std::vector<std::string> messages;
    return messages;
}

int record(CWin*, const CStr& title, const CStr& text, int flags) {
    shown().push_back(std::string(title.asChar()) + "/" + text.asChar());
    return flags & mbYes ? mbYes : mbOk;
}

class Messages : public ::testing::Test {
protected:
    void SetUp() override { shown().clear(); }
    void TearDown() override { messageHooks() = MessageHooks(); }
};

} // namespace

TEST_F(Messages, AnswerAsEscapeWithoutWindows) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(showMsg(nullptr, "t", "1", mbYes | mbNo | mbCancel), mbCancel);
    EXPECT_EQ(showMsg(nullptr, "t", "2", mbYes | mbNo), mbNo);
    EXPECT_EQ(showMsg(nullptr, "t", "3", 0), mbOk);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "t: 1\nt: 2\nt: 3\n");
}

TEST_F(Messages, FromOtherThreadsWaitForTheInterface) {
    messageHooks().showMsg = record;
    EXPECT_EQ(showMsg(nullptr, "now", "here", mbYes | mbNo), mbYes);
    std::thread([&] {
        EXPECT_EQ(showMsg(nullptr, "later", std::string(600, 'x').c_str(), mbYes | mbNo), mbNo);
    }).join();
    EXPECT_EQ(shown(), std::vector<std::string>{"now/here"});
    showQueuedMessages();
    showQueuedMessages();
    EXPECT_EQ(shown(), (std::vector<std::string>{"now/here", "later/" + std::string(511, 'x')}));
}

/// Several threads fill the queue over and over: each message comes at most once and unmixed, and a
/// full queue takes sixteen.
TEST_F(Messages, QueueKeepsMessagesApart) {
    messageHooks().showMsg = record;
    std::set<std::string> possible;
    for (int i = 0; i < 30; ++i) possible.insert(std::to_string(i) + "/" + std::to_string(i));
    for (int round = 0; round < 50; ++round) {
        shown().clear();
        std::vector<std::thread> threads;
        for (int t = 0; t < 3; ++t)
            threads.emplace_back([t] {
                for (int i = t * 10; i < t * 10 + 10; ++i) showMsg(nullptr, asStr(i), asStr(i));
            });
        for (std::thread& t : threads) t.join();
        showQueuedMessages();
        std::set<std::string> left = possible;
        for (const std::string& message : shown()) ASSERT_EQ(left.erase(message), 1u) << message;
        ASSERT_EQ(shown().size(), 16u);
    }
}
