#include "tools/plugins/PluginCheck.h"
#include "tools/plugins/SameSound.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

/// Writes what became of a plug-in as five digits, 0 or 1: it loads, sounds, keeps its state, has a
/// window of its own, and shows it. With `--same` and one effect in several formats it writes how
/// far their sounds are apart, as it begins and with each parameter at its end, a line for each.
int main(int argc, char** argv) {
    const bool same = argc > 3 && std::strcmp(argv[1], "--same") == 0;
    if (argc != 2 && !same) {
        std::fprintf(stderr, "usage: sondrava-plugin-check PLUGIN | --same PLUGIN PLUGIN ...\n");
        return 2;
    }
    const int output = dup(STDOUT_FILENO);
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO); // plug-ins write what they like
    if (same) {
        for (const SoundsApart& one : apartIn({argv + 2, argv + argc}))
            dprintf(output, "%g %s\n", one.most, one.param.asChar());
    } else {
        const PluginCheck found = checkPlugin(argv[1]);
        dprintf(output, "%d %d %d %d %d\n", found.loads, found.sounds, found.keeps, found.drawn,
                found.shows);
    }
    _exit(0); // their threads and destructors are not waited for
}
