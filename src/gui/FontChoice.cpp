#include "gui/FontChoice.h"

#include "base/LibraryCall.h"
#include "gui/Utf8.h"
#include "gui/XConnection.h"

#include <X11/Xft/Xft.h>
#include <dlfcn.h>

#include <algorithm>

namespace {

/// The calls of the library, which stays loaded once it was found.
struct FcCalls {
    decltype(&FcPatternCreate) create = nullptr;
    decltype(&FcPatternDestroy) destroy = nullptr;
    decltype(&FcPatternAddString) addString = nullptr;
    decltype(&FcPatternAddDouble) addDouble = nullptr;
    decltype(&FcPatternAddInteger) addInteger = nullptr;
    decltype(&FcPatternAddMatrix) addMatrix = nullptr;
    decltype(&FcConfigSubstitute) substitute = nullptr;
    decltype(&FcFontMatch) match = nullptr;
    decltype(&FcFontSort) sort = nullptr;
    decltype(&FcFontSetDestroy) destroySet = nullptr;
    decltype(&FcFontRenderPrepare) prepare = nullptr;
    decltype(&FcPatternGetCharSet) characters = nullptr;
    decltype(&FcCharSetHasChar) hasCharacter = nullptr;
    decltype(&XftDefaultSubstitute) screenDefaults = nullptr;
    bool complete = false;

    FcCalls() {
        void* library = dlopen("libfontconfig.so.1", RTLD_NOW | RTLD_LOCAL);
        void* drawing = dlopen("libXft.so.2", RTLD_NOW | RTLD_LOCAL);
        complete = findCall(library, "FcPatternCreate", create) &&
                   findCall(library, "FcPatternDestroy", destroy) &&
                   findCall(library, "FcPatternAddString", addString) &&
                   findCall(library, "FcPatternAddDouble", addDouble) &&
                   findCall(library, "FcPatternAddInteger", addInteger) &&
                   findCall(library, "FcPatternAddMatrix", addMatrix) &&
                   findCall(library, "FcConfigSubstitute", substitute) &&
                   findCall(library, "FcFontMatch", match) &&
                   findCall(library, "FcFontSort", sort) &&
                   findCall(library, "FcFontSetDestroy", destroySet) &&
                   findCall(library, "FcFontRenderPrepare", prepare) &&
                   findCall(library, "FcPatternGetCharSet", characters) &&
                   findCall(library, "FcCharSetHasChar", hasCharacter) &&
                   findCall(drawing, "XftDefaultSubstitute", screenDefaults);
    }
};

const FcCalls& fc() {
    static const FcCalls calls;
    return calls;
}

/// `fribidi_log2vis`, whose types are plain numbers: characters, length, direction of the text, and
/// what comes out, of which only the characters are asked for.
using Reorder = signed char (*)(const uint32_t*, int, uint32_t*, uint32_t*, int*, int*,
                                signed char*);

Reorder reorder() {
    static const Reorder call = [] {
        Reorder found = nullptr;
        findCall(dlopen("libfribidi.so.0", RTLD_NOW | RTLD_LOCAL), "fribidi_log2vis", found);
        return found;
    }();
    return call;
}

} // namespace

bool FontChoice::possible() {
    return fc().complete;
}

FontChoice::FontChoice(const Wish& wish) : request(fc().create()) {
    const auto* family = reinterpret_cast<const FcChar8*>(wish.family.c_str());
    fc().addString(request, FC_FAMILY, family);
    fc().addDouble(request, FC_PIXEL_SIZE, wish.deviceSize);
    if (wish.bold) fc().addInteger(request, FC_WEIGHT, FC_WEIGHT_BOLD);
    const FcMatrix quarter{0, -1, 1, 0};
    if (wish.turned) fc().addMatrix(request, FC_MATRIX, &quarter);
    fc().substitute(nullptr, request, FcMatchPattern);
    fc().screenDefaults(liveDisplay(), xConnection().screen, request);
}

FontChoice::~FontChoice() {
    fc().destroy(request);
    if (sorted) fc().destroySet(sorted);
}

FcPattern* FontChoice::best() const {
    FcResult result = FcResultMatch;
    return fc().match(nullptr, request, &result);
}

int FontChoice::numberFor(uint32_t character) {
    FcResult result = FcResultMatch;
    if (!sorted) sorted = fc().sort(nullptr, request, FcTrue, nullptr, &result);
    for (int i = 0; sorted && i < sorted->nfont; i++) {
        FcCharSet* known = nullptr;
        if (fc().characters(sorted->fonts[i], FC_CHARSET, 0, &known) == FcResultMatch &&
            fc().hasCharacter(known, character))
            return i;
    }
    return -1;
}

FcPattern* FontChoice::numbered(int number) const {
    return fc().prepare(nullptr, request, sorted->fonts[number]);
}

std::vector<uint32_t> shownCharacters(std::string_view text) {
    constexpr uint32_t firstTurned = 0x590; // Hebrew, the first script from right to left
    constexpr uint32_t neutral = 0x40;      // the text's own first letter tells its direction
    constexpr uint32_t joined = 0xfeff;     // in place of a letter that became part of another
    std::vector<uint32_t> written;
    for (size_t at = 0; at < text.size();) written.push_back(nextCharacter(text, at));
    const bool plain =
        std::ranges::all_of(written, [](uint32_t c) { return c < firstTurned || c >= 0x10000; });
    if (plain || !reorder()) return written;
    std::vector<uint32_t> shown(written.size() + 1); // it ends the text with a 0
    uint32_t direction = neutral;
    if (!reorder()(written.data(), int(written.size()), &direction, shown.data(), nullptr, nullptr,
                   nullptr))
        return written;
    shown.pop_back();
    std::erase(shown, joined);
    return shown;
}
