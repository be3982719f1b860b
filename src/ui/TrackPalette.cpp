#include "ui/TrackPalette.h"

#include "gui/Colours.h"

#include <cstddef>
#include <iterator>

namespace {

const unsigned trackColours[16] = {0x5aa9e6, 0x6fc18d, 0xe0a458, 0xd97b8f, 0xa58be0, 0x5fc0c0,
                                   0xc9b458, 0xe08a6b, 0x7f9cf0, 0x8cc26a, 0xd987c4, 0x62b7d8,
                                   0xc79a7b, 0x9aa7b8, 0xb0a0f0, 0x7ac5a0};

} // namespace

int trackColour(int index) {
    return hexColor(trackColours[size_t(index) % std::size(trackColours)]);
}
