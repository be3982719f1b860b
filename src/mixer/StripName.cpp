#include "mixer/StripName.h"

#include "gui/CGraphic.h"
#include "gui/Fonts.h"
#include "gui/Scale.h"

#include <string_view>

namespace {

constexpr TextLook smallLook = {.size = TextSize::small};

/// How many bytes of a name stand on the first of two lines.
size_t firstLine(std::string_view name, int width) {
    const size_t most = textFace(smallLook)->fitting(name, toDevice(width)).size();
    const size_t blank = name.rfind(' ', most);
    return blank == std::string_view::npos || blank == 0 ? most : blank;
}

/// In the middle of a row, or from its left edge where it fills that.
void paintLine(CGraphic* g, int colour, const TextLook& look, const CStr& text, CRect row) {
    const TextFace* face = textFace(look);
    const CStr shown = face->shortened(text, row.width());
    const TextScope scope(g, look);
    g->drawText(colour, shown, row, face->textWidth(shown) < row.width() ? 0 : textLeft);
}

} // namespace

void paintStripName(CGraphic* g, int colour, const CStr& name, CRect box) {
    const TextLook bold = {.bold = true};
    const TextFace* face = textFace(smallLook);
    if (textFace(bold)->textWidth(name) <= box.width())
        return paintLine(g, colour, bold, name, box);
    if (face->textWidth(name) <= box.width()) return paintLine(g, colour, smallLook, name, box);
    const std::string_view all = name.asChar();
    const size_t first = firstLine(all, box.width());
    const CStr begin = name.sub(0, int(first));
    const size_t rest = all.find_first_not_of(' ', first);
    const int middle = (box.top + box.bottom) / 2;
    paintLine(g, colour, smallLook, begin, asRect(box.left, box.top, box.right, middle));
    if (rest == std::string_view::npos) return;
    paintLine(g, colour, smallLook, name.sub(int(rest), int(all.size() - rest)),
              asRect(box.left, middle, box.right, box.bottom));
}
