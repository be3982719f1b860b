#include "tools/plugins/PluginCheck.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

/// Writes what became of a plug-in as five digits, 0 or 1: it loads, sounds, keeps its state, has a
/// window of its own, and shows it.
int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: sondrava-plugin-check FILE\n");
        return 2;
    }
    const int output = dup(STDOUT_FILENO);
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO); // plug-ins write what they like
    const PluginCheck found = checkPlugin(argv[1]);
    dprintf(output, "%d %d %d %d %d\n", found.loads, found.sounds, found.keeps, found.drawn,
            found.shows);
    _exit(0); // their threads and destructors are not waited for
}
