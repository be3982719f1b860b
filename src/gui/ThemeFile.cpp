#include "gui/ThemeFile.h"

#include "base/Numbers.h"
#include "gui/CGui.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Images.h"

#include <bit>
#include <climits>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

constexpr int wordBytes = 4;
constexpr int oldBytes = 512; ///< of a whole item in the old form
constexpr int imageHead = 20; ///< bytes of an image's record besides name and file
constexpr int longestSep = 64;

enum class Kind { number, direction, colour, real };

/// A word of an item: its record in the new form (null without one), when that is written, and its
/// range. The order is that of both forms.
struct Field {
    const char* key;
    int caps; ///< GuiCaps that the record needs, 0 none
    Kind kind;
    int CGuiItem2::*number; ///< null for the only real one, `fillEffect`
    int low = INT_MIN, high = INT_MAX;
};

const Field fields[] = {
    {"itemmode", 0, Kind::number, &CGuiItem2::mode},
    {nullptr, 0, Kind::number, &CGuiItem2::width},
    {nullptr, 0, Kind::number, &CGuiItem2::height},
    {"itemshape", capShape, Kind::number, &CGuiItem2::shape, 0, 1},
    {"itemframe", capFrame, Kind::number, &CGuiItem2::frame, 0, 1},
    {"itemframecol", capFrame, Kind::colour, &CGuiItem2::frameCol},
    {"itemfill", capFill, Kind::number, &CGuiItem2::fill, fillNone, fillImage},
    {"itemfilltex", capFill, Kind::number, &CGuiItem2::fillTex, textureGlossy, textureGradient},
    {"itemfillcol", capFill, Kind::colour, &CGuiItem2::fillCol},
    {"itemfillcol2", capFill, Kind::colour, &CGuiItem2::fillCol2},
    {"itemfillalign", capFill, Kind::direction, &CGuiItem2::fillAlign},
    {"itemfilleffect", capFill, Kind::real, nullptr},
    {"itemtextcol", capText, Kind::colour, &CGuiItem2::textCol},
    {"itemsymbcol", capSymbol, Kind::colour, &CGuiItem2::symbolCol},
    {"itemsep", capSep, Kind::number, &CGuiItem2::sep, 0, 1},
    {"itemsepcol", capSep, Kind::colour, &CGuiItem2::sepCol},
    {nullptr, 0, Kind::number, &CGuiItem2::sepSize, 0, longestSep},
};

constexpr const char* imageKey = "itemfillImg";
constexpr const char* imageField = "itemfilleffect"; ///< the record behind which it stands

bool isDirection(int word) {
    return word == gradientAcross || word == gradientDown || word == gradientDownUp ||
           word == gradientAcrossTo;
}

float realOf(int word) {
    const float v = std::bit_cast<float>(word);
    return std::isfinite(v) ? fLimit(v, -1.0f, 1.0f) : CGuiLook().fillEffect;
}

/// `portable`: a colour comes in the form of files, else as a pixel.
void setField(CGuiItem2& item, const Field& field, int word, bool portable) {
    if (field.kind == Kind::real)
        item.fillEffect = realOf(word);
    else if (field.kind == Kind::colour)
        item.*field.number = portable ? intToRGB(word) : word;
    else if (field.kind == Kind::direction)
        item.*field.number = isDirection(word) ? word : gradientAcross;
    else
        item.*field.number = asMinMax(word, field.low, field.high);
}

int wordOf(const CGuiItem2& item, const Field& field, bool portable) {
    if (field.kind == Kind::real) return std::bit_cast<int>(item.fillEffect);
    const int v = item.*field.number;
    return field.kind == Kind::colour && portable ? RGBToInt(v) : v;
}

/// One pass over a file.
class ThemeReader {
public:
    ThemeReader(CGui& theme, CStream& stream) : gui(theme), in(stream) {}

    void read() {
        while (next()) {
            record();
            in.setPos(end);
        }
    }

private:
    /// Finds the next record whole.
    bool next() {
        if (!text(in.getSize(), key) || in.left() < wordBytes) return false;
        const int size = in.readInt();
        end = in.getPos() + size;
        return size >= 0 && end <= in.getSize();
    }

    /// A text that lies in front of `limit` whole.
    bool text(int64_t limit, CStr& to) {
        const int64_t from = in.getPos();
        if (limit - from < wordBytes) return false;
        const int length = in.readInt();
        if (length < 0 || length > limit - in.getPos()) return false;
        in.setPos(from);
        to = in.readStr();
        return true;
    }

    void record() {
        if (key == "img") return readImage();
        if (key == "itemid2") {
            newForm = true;
            return readItem();
        }
        if (key == "itemid") return newForm ? void() : readItem();
        if (!item) return;
        if (key == "itemdata") return newForm ? void() : readOld();
        readField();
    }

    void readItem() {
        CStr id;
        item = text(end, id) ? gui.findItem(id) : nullptr;
    }

    void readField() {
        if (end - in.getPos() < wordBytes) return;
        if (key == imageKey) {
            const int index = in.readInt();
            item->image =
                index >= 0 && size_t(index) < pictures.size() ? pictures[size_t(index)] : nullptr;
            return;
        }
        for (const Field& field : fields)
            if (field.key && key == field.key) {
                item->linkTo = nullptr;
                return setField(*item, field, in.readInt(), true);
            }
    }

    void readOld() {
        if (end - in.getPos() < int64_t(std::size(fields)) * wordBytes) return;
        item->linkTo = nullptr;
        item->image = nullptr;
        for (const Field& field : fields) {
            const int word = in.readInt();
            const bool sized =
                field.number == &CGuiItem2::width || field.number == &CGuiItem2::height;
            if (!sized) setField(*item, field, word, false);
        }
    }

    void readImage() {
        CStr name;
        if (!text(end, name) || end - in.getPos() < imageHead - wordBytes) return;
        const int mode = in.readInt(), width = in.readInt(), height = in.readInt();
        const int bytes = in.readInt();
        if (bytes < 0 || bytes > end - in.getPos()) return;
        auto* picture = new CImageChunk;
        picture->id = name;
        picture->mode = mode;
        picture->width = width;
        picture->height = height;
        picture->data.copy(&in, bytes);
        gui.addImage(picture);
        pictures.push_back(picture);
    }

    CGui& gui;
    CStream& in;
    CStr key;                           ///< of the present record
    int64_t end = 0;                    ///< of its bytes
    CGuiItem2* item = nullptr;          ///< that fields go to, null for one that is unknown
    bool newForm = false;               ///< the file has records of fields
    std::vector<CImageChunk*> pictures; ///< of the file, by index
};

void writeImage(CStream& out, CImageChunk& picture) {
    out.writeId("img", picture.id.length() + picture.getSize() + imageHead);
    out.writeStr(picture.id);
    for (const int word : {picture.mode, picture.width, picture.height, picture.getSize()})
        out.writeInt(word);
    out.write(picture.getData(), picture.getSize());
}

void writeKey(CStream& out, const char* key, const CStr& id) {
    out.writeId(key, id.length() + wordBytes);
    out.writeStr(id);
}

void writeWord(CStream& out, const char* key, int word) {
    out.writeId(key, wordBytes);
    out.writeInt(word);
}

void writeFields(CStream& out, const CGuiItem2& item, const CList& images) {
    for (const Field& field : fields) {
        const bool wanted = field.caps ? (item.caps & field.caps) != 0 : item.*field.number != 0;
        if (!field.key || !wanted) continue;
        writeWord(out, field.key, wordOf(item, field, true));
        if (item.fill == fillImage && !std::strcmp(field.key, imageField))
            writeWord(out, imageKey, images.indexed(item.image));
    }
}

void writeOld(CStream& out, const CGuiItem2& item) {
    writeKey(out, "itemid", item.id);
    out.writeId("itemdata", oldBytes);
    for (const Field& field : fields) out.writeInt(wordOf(item, field, false));
    for (int i = int(std::size(fields)); i < oldBytes / wordBytes; i++) out.writeInt(0);
}

} // namespace

void readTheme(CGui& gui, CStream& in) {
    ThemeReader(gui, in).read();
}

void writeTheme(const CGui& gui, CStream& out) {
    for (auto* picture : gui.images) writeImage(out, *picture);
    for (int i = 0; i < gui.numItems(); i++) {
        const CGuiItem2& item = *gui.getItem(i);
        writeKey(out, "itemid2", item.id);
        writeFields(out, item, gui.images);
        writeOld(out, item);
    }
}
