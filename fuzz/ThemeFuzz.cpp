#include "base/CStream.h"
#include "gui/CGui.h"
#include "gui/ThemeFile.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

// Themes: any bytes are read and their bitmaps made. What was read can be written, and is the same
// when it has been read again.

namespace {

void reread(CGui& gui, CMemoryStream& in, CMemoryStream& out) {
    gui.setPalette(lightPalette());
    in.setPos(0);
    readTheme(gui, in);
    gui.updateAll();
    writeTheme(gui, out);
}

bool same(const CMemoryStream& a, const CMemoryStream& b) {
    return a.size == b.size && std::memcmp(a.data, b.data, size_t(a.size)) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static CGui gui;
    CMemoryStream in, once, twice, thrice;
    in.write(data, int(size));
    reread(gui, in, once);
    int64_t bytes = 0;
    for (int i = 0; i < gui.numItems(); i++) bytes += guiBitmapBytes(*gui.getItem(i));
    if (bytes > 64 << 20) std::abort();
    reread(gui, once, twice); // the pixels of the old form follow the records of the new one
    reread(gui, twice, thrice);
    if (!same(twice, thrice)) std::abort();
    return 0;
}
