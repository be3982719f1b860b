#include "WriteFence.h"

#include <cstdint>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr uint64_t writing = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                             LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                             LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                             LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                             LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;

bool allow(int rules, const char* path) {
    landlock_path_beneath_attr beneath{};
    beneath.allowed_access = writing;
    beneath.parent_fd = open(path, O_PATH | O_CLOEXEC);
    if (beneath.parent_fd < 0) return false;
    const long result =
        syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &beneath, 0);
    close(beneath.parent_fd);
    return result == 0;
}

} // namespace

bool fenceWrites(const std::string& folder) {
    landlock_ruleset_attr handled{};
    handled.handled_access_fs = writing;
    const int rules = int(syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0));
    if (rules < 0) return false;
    const bool good = allow(rules, folder.c_str()) && allow(rules, "/dev") &&
                      prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                      syscall(SYS_landlock_restrict_self, rules, 0) == 0;
    close(rules);
    return good;
}
