// Writes the theme file that lies beside the program. Needs no display.
#include "ui/CAppGui.h"
#include "ui/Skins.h"

#include <cstdio>

int main(int count, char** words) {
    if (count != 2) {
        std::fprintf(stderr, "usage: %s FILE.qvl\n", words[0]);
        return 1;
    }
    CAppGui theme;
    setDefaultLook(theme);
    if (theme.save(words[1])) return 0;
    std::fprintf(stderr, "%s cannot be written\n", words[1]);
    return 1;
}
