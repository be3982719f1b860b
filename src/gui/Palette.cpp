#include "gui/Palette.h"

#include "gui/Colours.h"

CPalette darkPalette() {
    return {hexColor(0x23262b),
            hexColor(0x2b2f36),
            hexColor(0x31363f),
            hexColor(0x15171a),
            hexColor(0xe6e8eb),
            hexColor(0xa3aab4),
            hexColor(0x58a9ff),
            hexColor(0xe5484d),
            hexColor(0xf4d03f),
            hexColor(0xf0932b),
            {hexColor(0x3fbf7f), hexColor(0xe5c07b), hexColor(0xe5484d)}};
}

CPalette lightPalette() {
    return {hexColor(0xeceef1),
            hexColor(0xf7f8fa),
            hexColor(0xffffff),
            hexColor(0xc3c8d0),
            hexColor(0x1c1f23),
            hexColor(0x5c6470),
            hexColor(0x0b66c3),
            hexColor(0xb4232a),
            hexColor(0xf4d03f),
            hexColor(0xf0932b),
            {hexColor(0x1d7a4c), hexColor(0x8a5a00), hexColor(0xb4232a)}};
}
