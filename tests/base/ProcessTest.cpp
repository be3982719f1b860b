#include "base/Process.h"

#include "Deadline.h"
#include "TempFolder.h"
#include "base/Numbers.h"

#include <sys/wait.h>
#include <unistd.h>

namespace {

int run(std::initializer_list<CStr> words) {
    CStringList argv;
    for (const CStr& word : words) argv.append(word);
    return runProcess(argv);
}

/// Running ones and zombies, which are left as they are.
bool haveChildren() {
    siginfo_t info{};
    return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

} // namespace

TEST(Process, ReturnsTheExitStatus) {
    EXPECT_EQ(run({"sh", "-c", "exit 3"}), 3);
    EXPECT_EQ(run({"sh", "-c", "kill -9 $$"}), 128 + 9);
    EXPECT_EQ(run({"no-such-program-anywhere"}), 127);
    EXPECT_EQ(run({}), 127);
}

TEST(Process, KeepsOurFilesFromIt) {
    const int fd = dup(STDERR_FILENO);
    EXPECT_EQ(run({"test", "-e", "/proc/self/fd/" + asStr(fd)}), 1);
    close(fd);
}

TEST(Process, StartsWithoutWaitingAndLeavesNoZombie) {
    const TempFolder folder;
    const CStr gate = folder.file("gate");
    CStringList argv;
    for (const CStr& word :
         {CStr("sh"), CStr("-c"), "while [ ! -e '" + gate + "' ]; do sleep 0.01; done"})
        argv.append(word);
    EXPECT_TRUE(startProcess(argv));
    EXPECT_TRUE(haveChildren()) << "it should still run";
    folder.write("gate", "");
    EXPECT_TRUE(comes([] { return !haveChildren(); })) << "nobody reaped it";

    CStringList missing;
    missing.append("no-such-program-anywhere");
    EXPECT_FALSE(startProcess(missing));
}

/// The desktop's opener gets the target as one argument, and no target is taken for an option.
TEST(Process, OpensThroughTheDesktop) {
    const TempFolder folder;
    const CStr opener = folder.write("xdg-open", "#!/bin/sh\nprintf %s \"$#:$1\" > '" +
                                                     std::string(folder.path.asChar()) + "/got'\n");
    ASSERT_EQ(run({"chmod", "+x", opener}), 0);
    const std::string before = std::getenv("PATH");
    setenv("PATH", (std::string(folder.path.asChar()) + ":" + before).c_str(), 1);
    EXPECT_TRUE(showFolder("/my music"));
    EXPECT_TRUE(comes([&] { return folder.read("got") == "1:/my music"; }));
    EXPECT_TRUE(openURL("https://example.org/?a=1&b=2"));
    EXPECT_TRUE(comes([&] { return folder.read("got") == "1:https://example.org/?a=1&b=2"; }));
    EXPECT_FALSE(openURL("--help"));
    EXPECT_FALSE(showFolder(""));
    setenv("PATH", before.c_str(), 1);
    EXPECT_TRUE(comes([] { return !haveChildren(); }));
}
