#include "surfaces/SurfaceDef.h"

#include "base/CStream.h"
#include "base/Paths.h"
#include "base/SafeFile.h"

#include <algorithm>
#include <array>
#include <map>

bool CHWCtrlGroup::hasCC(int cc) const {
    return std::ranges::any_of(ctrls, [cc](const CHWCtrl& c) { return c.cc == cc; });
}

CHWCtrl* CHWCtrlGroup::getCtrl(int i) {
    return i >= 0 && i < numCtrls() ? &ctrls[size_t(i)] : nullptr;
}

int CHWCtrl::valueByte() const {
    return sysex.offset > 0 && sysex.offset < sysex.size() - 1 ? sysex.offset : -1;
}

SurfaceImage loadTexture(const CStr& path) {
    constexpr int64_t mostBytes = 16 << 20;
    constexpr std::array<unsigned char, 8> signature = {0x89, 'P',  'N',  'G',
                                                        '\r', '\n', 0x1A, '\n'};
    constexpr int sizeAt = 16; // in the first record of the file
    CFileStream stream(path, 0);
    if (!stream.isOpen() || stream.getSize() <= sizeAt + 8 || stream.getSize() > mostBytes)
        return {};
    SurfaceImage image;
    image.png.resize(size_t(stream.getSize()));
    const int read = stream.read(image.png.data(), int(image.png.size()));
    if (read != int(image.png.size()) ||
        !std::equal(signature.begin(), signature.end(), image.png.begin()))
        return {};
    image.name = extractFileName(path).asChar();
    image.mode = 1;
    stream.setPos(sizeAt);
    image.width = stream.readIntSwap();
    image.height = stream.readIntSwap();
    return image;
}

CHWCtrl* CHWCtrlGroup::addCtrl(const CStr& ctrlName, int cc) {
    ctrls.push_back({});
    ctrls.back().name = ctrlName;
    ctrls.back().cc = cc;
    return &ctrls.back();
}

CControlSectionPage* CControlPages::page() {
    if (pages.empty()) return nullptr;
    current = std::clamp(current, 0, int(pages.size()) - 1);
    return &pages[size_t(current)];
}

namespace {

constexpr int headBytes = 4, imageInts = 16;

/// Reads the records of a file into a definition.
class Reader {
public:
    Reader(SurfaceDef& target, CStream* from) : def(target), stream(from) {}

    void run() {
        while (stream->left() >= 2 * headBytes && parts < SurfaceDef::mostParts) {
            const std::string id = stream->readStr().asChar();
            const int64_t size = stream->readInt();
            if (size < 0 || size > stream->left()) return;
            const int64_t end = stream->getPos() + size;
            readRecord(id, end);
            stream->setPos(end);
        }
    }

private:
    using Step = void (Reader::*)(int64_t end);

    void readRecord(const std::string& id, int64_t end) {
        static const std::map<std::string, Step> steps = {{"imgBkgnd", &Reader::background},
                                                          {"bkgndTextCol", &Reader::textColour},
                                                          {"imgLogo", &Reader::logo},
                                                          {"sysexGetPreset", &Reader::getPreset},
                                                          {"sysexSetPreset", &Reader::setPreset},
                                                          {"hwg", &Reader::group},
                                                          {"hwc", &Reader::control},
                                                          {"hwcsx", &Reader::controlSysex},
                                                          {"sec", &Reader::section},
                                                          {"sec-id", &Reader::sectionName},
                                                          {"sec-align", &Reader::sectionAlign},
                                                          {"sec-pa", &Reader::page},
                                                          {"sec-pa-map", &Reader::mapped},
                                                          {"imgBkgndValue", &Reader::valueImage},
                                                          {"imgBkgndOn", &Reader::onImage},
                                                          {"imgBkgndOff", &Reader::offImage},
                                                          {"valueColText", &Reader::valueColour},
                                                          {"map-label", &Reader::label},
                                                          {"map-list-items", &Reader::items},
                                                          {"map-pos", &Reader::place},
                                                          {"map-sx-offset", &Reader::presetOffset},
                                                          {"map-sx-datasize", &Reader::presetSize},
                                                          {"map-takeover", &Reader::takeOver}};
        const auto known = steps.find(id);
        if (known != steps.end()) (this->*known->second)(end);
    }

    /// A text that lies inside its record; empty for one that does not.
    std::string text(int64_t end) {
        if (end - stream->getPos() < headBytes) return "";
        const int64_t length = stream->readInt();
        if (length < 0 || length > end - stream->getPos()) return "";
        std::string read(size_t(length), '\0');
        stream->read(read.data(), int(length));
        return read.c_str();
    }
    int number(int64_t end) { return end - stream->getPos() < headBytes ? 0 : stream->readInt(); }

    SurfaceImage image(int64_t end) {
        SurfaceImage read;
        read.name = text(end);
        read.mode = number(end);
        read.width = number(end);
        read.height = number(end);
        const int64_t size = number(end);
        if (size < 0 || size > end - stream->getPos()) return {};
        read.png.resize(size_t(size));
        stream->read(read.png.data(), int(size));
        return read;
    }
    void sysex(int64_t end, std::string& written, CSysexData& data) {
        written = text(end);
        data.offset = std::clamp(number(end), 0, CSysexData::mostBytes);
        data.fromStr(written.c_str(), false);
    }

    CControlPages* sectionNow() { return def.sections.empty() ? nullptr : &def.sections.back(); }
    CControlMap* mapNow() {
        CControlPages* in = sectionNow();
        return !in || in->pages.empty() || in->pages.back().maps.empty()
                   ? nullptr
                   : &in->pages.back().maps.back();
    }

    void background(int64_t end) { def.background = image(end); }
    void logo(int64_t end) { def.logo = image(end); }
    void textColour(int64_t end) { def.textColour = number(end); }
    void getPreset(int64_t end) { sysex(end, def.getPresetText, def.getPreset); }
    void setPreset(int64_t end) { sysex(end, def.setPresetText, def.setPreset); }
    void group(int64_t end) {
        parts++;
        def.groups.push_back({text(end).c_str(), {}});
    }
    void control(int64_t end) {
        if (def.groups.empty() || def.groups.back().numCtrls() >= SurfaceDef::mostCtrls) return;
        parts++;
        const std::string name = text(end);
        def.groups.back().addCtrl(name.c_str(), number(end));
    }
    void controlSysex(int64_t end) {
        if (def.groups.empty() || def.groups.back().ctrls.empty()) return;
        CHWCtrl& ctrl = def.groups.back().ctrls.back();
        sysex(end, ctrl.sysexText, ctrl.sysex);
    }
    void section(int64_t) {
        parts++;
        def.sections.push_back({});
    }
    void sectionName(int64_t end) {
        if (CControlPages* in = sectionNow()) in->name = text(end).c_str();
    }
    void sectionAlign(int64_t end) {
        if (CControlPages* in = sectionNow()) in->align = number(end);
    }
    void page(int64_t end) {
        CControlPages* in = sectionNow();
        if (!in) return;
        parts++;
        in->pages.push_back({text(end).c_str(), {}});
    }
    void mapped(int64_t end) {
        CControlPages* in = sectionNow();
        if (!in || in->pages.empty()) return;
        parts++;
        CControlMap map;
        for (int* field : {&map.mode, &map.param, &map.group, &map.controlType})
            *field = number(end);
        if (map.mode < 0 || map.mode >= surfaceModes) map.mode = surfaceStore;
        if (map.group < 0 || map.group >= int(def.groups.size())) map.group = -1;
        in->pages.back().maps.push_back(std::move(map));
    }
    void valueImage(int64_t end) {
        if (CControlMap* map = mapNow()) map->value = image(end);
    }
    void onImage(int64_t end) {
        if (CControlMap* map = mapNow()) map->on = image(end);
    }
    void offImage(int64_t end) {
        if (CControlMap* map = mapNow()) map->off = image(end);
    }
    void valueColour(int64_t end) {
        if (CControlMap* map = mapNow()) map->textColour = number(end);
    }
    void label(int64_t end) {
        if (CControlMap* map = mapNow()) map->label = text(end).c_str();
    }
    void items(int64_t end) {
        CControlMap* map = mapNow();
        if (!map) return;
        map->items.clear();
        const int count = std::min(number(end), SurfaceDef::mostItems);
        for (int i = 0; i < count && end - stream->getPos() >= headBytes; i++)
            map->items.push_back(text(end));
    }
    void place(int64_t end) {
        CControlMap* map = mapNow();
        if (!map) return;
        map->left = number(end);
        map->top = number(end);
    }
    void presetOffset(int64_t end) {
        if (CControlMap* map = mapNow())
            map->sxOffset = std::clamp(number(end), -1, CSysexData::mostBytes - 1);
    }
    void presetSize(int64_t end) {
        if (CControlMap* map = mapNow())
            map->sxDataSize = std::clamp(number(end), 0, CSysexData::mostBytes);
    }

    void takeOver(int64_t end) {
        const int mode = number(end);
        CControlMap* map = mapNow();
        if (map && mode >= 0 && mode < mapModes) map->takeOver = mode;
    }

    SurfaceDef& def;
    CStream* stream;
    int parts = 0;
};

/// Writes a definition as records.
class Writer {
public:
    Writer(const SurfaceDef& source, CStream* to) : def(source), stream(to) {}

    void run() {
        image("imgBkgnd", def.background);
        number("bkgndTextCol", def.textColour);
        image("imgLogo", def.logo);
        preset("sysexGetPreset", def.getPresetText, def.getPreset);
        preset("sysexSetPreset", def.setPresetText, def.setPreset);
        for (const CHWCtrlGroup& group : def.groups) {
            named("hwg", group.name.asChar(), {0, 0, 0, 0});
            for (const CHWCtrl& ctrl : group.ctrls) {
                named("hwc", ctrl.name.asChar(), {ctrl.cc, 0, 0, 0});
                if (!ctrl.sysexText.empty())
                    named("hwcsx", ctrl.sysexText, {ctrl.sysex.offset, 0, 0, 0});
            }
        }
        for (const CControlPages& section : def.sections) {
            stream->writeId("sec", 0);
            named("sec-id", section.name.asChar(), {});
            number("sec-align", section.align);
            for (const CControlSectionPage& page : section.pages) {
                named("sec-pa", page.name.asChar(), {});
                for (const CControlMap& map : page.maps) mapped(map);
            }
        }
    }

private:
    void named(const char* id, const std::string& text, std::initializer_list<int> numbers) {
        stream->writeId(id, int(text.size()) + headBytes + headBytes * int(numbers.size()));
        stream->writeStr(text.c_str());
        for (const int n : numbers) stream->writeInt(n);
    }
    void number(const char* id, int value) {
        stream->writeId(id, headBytes);
        stream->writeInt(value);
    }
    void preset(const char* id, const std::string& text, const CSysexData& data) {
        named(id, text, {data.offset, -1});
    }
    void image(const char* id, const SurfaceImage& picture) {
        if (picture.png.empty()) return;
        stream->writeId(id, int(picture.name.size() + picture.png.size()) + headBytes + imageInts);
        stream->writeStr(picture.name.c_str());
        for (const int n : {picture.mode, picture.width, picture.height, int(picture.png.size())})
            stream->writeInt(n);
        stream->write(picture.png.data(), int(picture.png.size()));
    }
    void mapped(const CControlMap& map) {
        stream->writeId("sec-pa-map", 4 * headBytes);
        for (const int n : {map.mode, map.param, map.group, map.controlType}) stream->writeInt(n);
        if (map.controlType == surfaceValue) {
            image("imgBkgndValue", map.value);
            number("valueColText", map.textColour);
        } else if (map.controlType == surfaceButton) {
            image("imgBkgndOn", map.on);
            image("imgBkgndOff", map.off);
        }
        named("map-label", map.label.asChar(), {});
        if (!map.items.empty()) items(map);
        stream->writeId("map-pos", 2 * headBytes);
        stream->writeInt(map.left);
        stream->writeInt(map.top);
        number("map-sx-offset", map.sxOffset);
        number("map-sx-datasize", map.sxDataSize);
        if (map.takeOver != mapJump) number("map-takeover", map.takeOver);
    }
    void items(const CControlMap& map) {
        int bytes = headBytes;
        for (const std::string& item : map.items) bytes += headBytes + int(item.size());
        stream->writeId("map-list-items", bytes);
        stream->writeInt(int(map.items.size()));
        for (const std::string& item : map.items) stream->writeStr(item.c_str());
    }

    const SurfaceDef& def;
    CStream* stream;
};

} // namespace

void SurfaceDef::read(CStream* stream) {
    *this = SurfaceDef();
    Reader(*this, stream).run();
}

void SurfaceDef::write(CStream* stream) const {
    Writer(*this, stream).run();
}

bool SurfaceDef::open(const CStr& path) {
    CFileStream stream(path, 0);
    if (!stream.isOpen()) return false;
    read(&stream);
    return true;
}

bool SurfaceDef::save(const CStr& path) const {
    SafeFile file(path);
    if (!file.stream()) return false;
    write(file.stream());
    return file.commit();
}
