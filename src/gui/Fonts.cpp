#include "gui/Fonts.h"

#include "gui/Scale.h"
#include "gui/ServerText.h"
#include "gui/SmoothText.h"
#include "gui/XConnection.h"

TextSettings textSettings;

int TextFace::textWidth(const CStr& text) const {
    return toLogicalSize(deviceWidth(text.asChar()));
}

int TextFace::deviceWidth(std::string_view text) const {
    constexpr int guessedWidth = 6;
    return toDevice(int(text.size()) * guessedWidth);
}

int TextFace::centredBase(int top, int bottom) const {
    return top + deviceAscent / 2 + (bottom - top) / 2;
}

std::unique_ptr<TextPen> TextFace::makePen(unsigned long) const {
    return nullptr;
}

void TextFace::setHeights(int above, int below) {
    deviceAscent = above;
    deviceDescent = below;
    ascent = toLogicalSize(above);
    descent = toLogicalSize(below);
}

std::unique_ptr<TextFace> openFace() {
    std::unique_ptr<TextFace> face;
    if (liveDisplay() && textSettings.smooth)
        face = openSmoothFace(textSettings.family, textSettings.size);
    if (liveDisplay() && !face) face = openServerFace();
    return face ? std::move(face) : std::make_unique<TextFace>();
}
