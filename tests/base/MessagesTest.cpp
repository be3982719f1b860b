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
    const std::pair<int, int> cases[] = {{mbYes | mbNo | mbCancel, mbCancel},
                                         {mbYes | mbNo, mbNo},
                                         {mbOk | mbCancel, mbCancel},
                                         {mbOk, mbOk},
                                         {0, mbOk}};
    testing::internal::CaptureStderr();
    for (auto [flags, wanted] : cases)
        EXPECT_EQ(showMsg(nullptr, "t", "x", flags), wanted) << flags;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "t: x\nt: x\nt: x\nt: x\nt: x\n");
}

TEST_F(Messages, FromOtherThreadsWaitForTheInterface) {
    messageHooks().showMsg = record;
    EXPECT_EQ(showMsg(nullptr, "now", "here", mbYes | mbNo), mbYes);
    int answer = 0;
    const std::string longText(600, 'x');
    std::thread([&] {
        EXPECT_FALSE(isInterfaceThread());
        answer = showMsg(nullptr, "later", longText.c_str(), mbYes | mbNo);
    }).join();
    EXPECT_EQ(answer, mbNo);
    EXPECT_EQ(shown(), std::vector<std::string>{"now/here"});
    showQueuedMessages();
    showQueuedMessages();
    EXPECT_EQ(shown(), (std::vector<std::string>{"now/here", "later/" + std::string(511, 'x')}));
}

/// Several threads fill the queue over and over: each message comes at most once and unmixed, and a
/// full queue takes sixteen.
TEST_F(Messages, QueueKeepsMessagesApart) {
    messageHooks().showMsg = record;
    for (int round = 0; round < 50; ++round) {
        shown().clear();
        std::vector<std::thread> threads;
        for (int t = 0; t < 3; ++t)
            threads.emplace_back([t] {
                for (int i = t * 10; i < t * 10 + 10; ++i) showMsg(nullptr, asStr(i), asStr(i));
            });
        for (std::thread& t : threads) t.join();
        showQueuedMessages();
        std::set<std::string> seen;
        for (const std::string& message : shown()) {
            const size_t cut = message.find('/');
            ASSERT_EQ(message.substr(0, cut), message.substr(cut + 1));
            seen.insert(message);
        }
        ASSERT_TRUE(shown().size() == 16 && seen.size() == 16);
    }
}
