#include "project/QvText.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace {

using Table = std::map<std::string, std::string_view>;

// Fields of items: i int, h short, b byte, f float, s string, z int of zero, c byte of zero, x all
// that is left. A number repeats what follows; # and % repeat a group as an int or byte tells.
// N is a MIDI message, with its length if it is a note, S and R are the two records of a sample, L
// is what only an automation lane has, G is what follows the type of a sound, C a component.

const Table projectTable = {
    {"bpm", "f"},        {"loop", "i"},        {"audiodir", "s"},  {"samples2", "#(S)"},
    {"samples", "#(R)"}, {"page", "s2z"},      {"pagei", "i"},     {"pageModular", "i"},
    {"comp2", "C"},      {"insert2", "C"},     {"comped", "8i"},   {"compedi", "8i"},
    {"hideChs", "i"},    {"min", ""},          {"mini", ""},       {"mout", ""},
    {"mouti", ""},       {"ain", "i"},         {"aini", "i"},      {"aout", "i"},
    {"aouti", "i"},      {"strip2", "4f8b7z"}, {"eq", "4(2b3f)"},  {"eq2", "4(2b3f4b)"},
    {"sends", "#(f)"},   {"wet", "f"},         {"aoutCurCh", "i"}, {"mixer", "M"},
    {"mixed", "8i"},     {"ac", "bibbib"},     {"mc", "bibbib"},   {"ccplay", "i"},
    {"ccstop", "i"},     {"ccrew", "i"},       {"ccrec", "i"},     {"ccbpm", "i"},
    {"cm", "sb3c3z"},    {"cmap", "10i2z"},    {"cmi", "i"},       {"cmed", "8i"},
    {"modsb", "2i"}};

const Table songTable = {{"options", "32b"},
                         {"sync", "i"},
                         {"mxv", "i"},
                         {"snap", "3bci"},
                         {"progi", "i"},
                         {"smp", "2zs6i6zx"},
                         {"track", "2is4i4bi2z"},
                         {"trackCol", "i"},
                         {"trackInSens", "i"},
                         {"tracked", "8i"},
                         {"trackGroove", "2i2zfi#(f)"},
                         {"drumprogid", "s"},
                         {"sound", "bs2b2c2fi2fi2z2f2i14z2fzbbbc4bG"},
                         {"soStyle", "i"},
                         {"soParam", "i"},
                         {"soSends", "#(f)"},
                         {"soEq2", "4(2b3f4b)"},
                         {"soInsert2", "C"},
                         {"soInsertAin", "i"},
                         {"soInsertAout", "i"},
                         {"soInsert2wet", "f"},
                         {"sub", "s2b3iL"},
                         {"subex", "b3cz"},
                         {"arp", "x"},
                         {"arped", "8i"},
                         {"trackmc", "i"},
                         {"part", "3b5is"},
                         {"partCol", "i"},
                         {"achs", "i"},
                         {"multiclip", "b"},
                         {"mevents", "#(ibN)"},
                         {"aevents2", "#(4i2f2b2c4i5f4z)"},
                         {"aevents", "#(ibi2f2b4if2zi)"},
                         {"devents", "#(i2bi%(bf))"},
                         {"amevents", "i#(ib2fb)"},
                         {"prog", "fb2is"},
                         {"ptrack", "b"},
                         {"freeze", "2is"},
                         {"marker", "s2b2c2i2hf3z"},
                         {"amarker", "i"},
                         {"timesig", "s4ifi2z"},
                         {"tempo", "2if3z"},
                         {"editored", "8i"},
                         {"edopt", "32b"},
                         {"ed-noteh", "i"},
                         {"editorpp", "2i"}};

const Table anyTable;

constexpr int tempoBytes = 24, toldTempoBytes = 32, automationLane = -102;

/// Content of components by their type: blocks of a song, other blocks, or bytes.
const Table* contentOf(int type) {
    if (type == 4) return &songTable;
    const bool blocks = type == 3 || type == 7 || (type >= 10 && type <= 13);
    return blocks ? &anyTable : nullptr;
}

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what);
}

/// Takes values from one side to the other, as the fields tell.
class Walk {
public:
    virtual ~Walk() = default;

    void fields(std::string_view list) {
        for (size_t at = 0; at < list.size();) {
            int times = 0;
            bool told = false;
            for (; std::isdigit((unsigned char)list[at]); told = true)
                times = times * 10 + (list[at++] - '0');
            if (list[at] == '#' || list[at] == '%') {
                times = number(list[at++] == '#' ? 4 : 1);
                told = true;
            }
            const size_t end = list[at] == '(' ? closing(list, at) : at + 1;
            const bool group = list[at] == '(';
            const std::string_view one =
                group ? list.substr(at + 1, end - at - 2) : list.substr(at, 1);
            for (int i = 0; i < (told ? times : 1); i++) group ? fields(one) : field(one[0]);
            at = end;
        }
    }

protected:
    virtual int number(int bytes) = 0;
    virtual void zero(int bytes) = 0;
    virtual void real() = 0;
    virtual void string() = 0;
    virtual void raw(int64_t bytes) = 0; ///< -1: all that is left
    virtual void blocks(const Table& table) = 0;

private:
    std::vector<int64_t> frameBytes; ///< in memory, of each sample

    static size_t closing(std::string_view list, size_t open) {
        size_t at = open;
        for (int depth = 0; at == open || depth > 0; at++)
            depth += list[at] == '(' ? 1 : list[at] == ')' ? -1 : 0;
        return at;
    }
    void field(char kind) {
        switch (kind) {
        case 'i':
            number(4);
            break;
        case 'h':
            number(2);
            break;
        case 'b':
            number(1);
            break;
        case 'f':
            real();
            break;
        case 's':
            string();
            break;
        case 'z':
            zero(4);
            break;
        case 'c':
            zero(1);
            break;
        case 'x':
            raw(-1);
            break;
        case 'N':
            message();
            break;
        case 'S':
            sample();
            break;
        case 'R':
            oldSample();
            break;
        case 'L':
            automation();
            break;
        case 'G':
            fields(soundType == 1 ? "c%(ibcbbiz)" : "8f2i2f");
            break;
        case 'C':
            component();
            break;
        case 'M':
            blocks(anyTable);
            break;
        default:
            fail("no such field");
        }
    }
    void message() {
        const int data = number(4);
        if ((data & 0xF0) == 0x90 && (data & 0x7F0000)) number(4);
    }
    /// Name, rate, bits, channels, storage.
    int format(int64_t& bytesOfFrame) {
        string();
        real();
        const int bits = number(1), channels = number(1);
        bytesOfFrame = bits / 8 * channels;
        return number(1);
    }
    void sample() {
        int64_t bytes = 0;
        const int storage = format(bytes);
        number(1);
        if (storage == 1) number(1);
        frameBytes.push_back(storage == 0 ? bytes * number(4) : 0);
        if (storage == 0) raw(frameBytes.back());
    }
    void oldSample() {
        int64_t bytes = 0;
        if (format(bytes) == 1)
            number(1);
        else
            raw(frameBytes.at(oldSamples));
        oldSamples++;
    }
    void component() {
        number(1);
        const int type = number(1);
        fields("b2is2i2z");
        if (const Table* table = contentOf(type))
            blocks(*table);
        else
            raw(-1);
    }
    void automation() {
        if (laneKind == automationLane) fields("bib3cib3cib3ci2z");
    }

protected:
    int soundType = 0, laneKind = 0; ///< first byte and first int after the name of the block
    size_t oldSamples = 0;
};

/// A block in the making or on its way out remembers what decides about its later fields.
class Reader : public Walk {
public:
    explicit Reader(const std::string& bytes) : file(bytes), end(bytes.size()) {}

    std::string text() {
        if (file.substr(0, 7) != std::string("\3\0\0\0QVF", 7)) fail("no magic");
        at = 7;
        blocks(projectTable);
        return out.substr(1) + "\n";
    }

private:
    const std::string& file;
    size_t at = 0, end;
    int depth = 0, ints = 0;
    std::string out, id;

    void need(int64_t bytes) {
        if (bytes < 0 || bytes > int64_t(end - at)) fail(id + ": too short");
    }
    int64_t take(int bytes) {
        need(bytes);
        uint64_t v = 0;
        for (int i = 0; i < bytes; i++) v |= uint64_t((unsigned char)file[at++]) << (8 * i);
        return bytes == 4 ? int32_t(v) : bytes == 2 ? int16_t(v) : int8_t(v);
    }
    std::string takeText() {
        const int64_t length = take(4);
        need(length);
        at += size_t(length);
        return file.substr(at - size_t(length), size_t(length));
    }
    int number(int bytes) override {
        const int v = int(take(bytes));
        if (id == "sound" && ints++ == 0) soundType = v;
        if (id == "sub" && ints++ == 3) laneKind = v;
        out += ' ' + std::to_string(v);
        return v;
    }
    void zero(int bytes) override {
        if (take(bytes) != 0) fail(id + ": something where a zero belongs");
    }
    void real() override {
        char text[32];
        const float v = std::bit_cast<float>(int32_t(take(4)));
        std::snprintf(text, sizeof text, " %.9g", double(v));
        out += text;
    }
    void string() override { out += " \"" + takeText() + '"'; }
    void raw(int64_t bytes) override {
        if (bytes < 0) bytes = int64_t(end - at);
        need(bytes);
        out += bytes ? " " : " -";
        char text[3];
        for (; bytes > 0; bytes--) {
            std::snprintf(text, sizeof text, "%02x", (unsigned)(unsigned char)file[at++]);
            out += text;
        }
    }
    void blocks(const Table& table) override {
        depth++;
        while (at < end) block(table);
        depth--;
    }
    void block(const Table& table) {
        const std::string name = takeText();
        const int64_t told = take(4);
        const bool tempo = &table == &songTable && name == "tempo";
        if (tempo && told != toldTempoBytes) fail("tempo: another size");
        const int64_t bytes = tempo ? tempoBytes : told;
        id = name;
        need(bytes);
        const auto entry = table.find(name);
        if (!table.empty() && entry == table.end()) fail(name + ": in no table");
        out += '\n' + std::string(size_t(depth - 1) * 2, ' ') + (name.empty() ? "\"\"" : name);
        const size_t outer = end;
        end = at + size_t(bytes);
        ints = 0;
        fields(table.empty() ? "x" : entry->second);
        if (at != end) fail(name + ": longer than its fields");
        end = outer;
    }
};

class Writer : public Walk {
public:
    explicit Writer(const std::string& text) : lines(text) { nextLine(); }

    std::string file() {
        out = std::string("\3\0\0\0QVF", 7);
        blocks(projectTable);
        if (more) fail(line + ": too far in");
        return out;
    }

private:
    std::istringstream lines, values;
    std::string line, out, id;
    size_t depth = 0, indent = 0;
    int ints = 0, lineCount = 0;
    bool more = true;

    void nextLine() {
        lineCount++;
        while ((more = bool(std::getline(lines, line))))
            if ((indent = line.find_first_not_of(' ')) != std::string::npos) return;
    }
    void put(int64_t v, int bytes) {
        for (int i = 0; i < bytes; i++) out += char(v >> (8 * i));
    }
    std::string word() {
        std::string w;
        if (!(values >> w)) fail(id + ": too few values");
        return w;
    }
    int number(int bytes) override {
        const int v = std::stoi(word(), nullptr, 0);
        if (id == "sound" && ints++ == 0) soundType = v;
        if (id == "sub" && ints++ == 3) laneKind = v;
        put(v, bytes);
        return v;
    }
    void zero(int bytes) override { put(0, bytes); }
    void real() override { put(std::bit_cast<int32_t>(std::stof(word())), 4); }
    void string() override {
        std::string s;
        values >> std::ws;
        if (values.get() != '"') fail(id + ": no string");
        std::getline(values, s, '"');
        putText(s);
    }
    void putText(const std::string& s) {
        put(int64_t(s.size()), 4);
        out += s;
    }
    void raw(int64_t) override {
        const std::string hex = word();
        for (size_t i = 0; hex != "-" && i < hex.size(); i += 2)
            out += char(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    void blocks(const Table& table) override {
        if (depth > 0) nextLine();
        const size_t inside = depth++ * 2;
        while (more && indent == inside) block(table);
        depth--;
    }
    void block(const Table& table) {
        values = std::istringstream(line);
        std::string name = word();
        if (name == "\"\"") name.clear();
        id = name;
        ints = 0;
        const auto entry = table.find(name);
        if (!table.empty() && entry == table.end()) fail(name + ": in no table");
        putText(name);
        const size_t sizeAt = out.size();
        put(0, 4);
        const std::string_view list = table.empty() ? "x" : entry->second;
        const int own = lineCount;
        fields(list);
        if (lineCount == own) nextLine(); // what is nested goes to the next line by itself
        const bool tempo = &table == &songTable && name == "tempo";
        const size_t bytes = tempo ? toldTempoBytes : out.size() - sizeAt - 4;
        for (int i = 0; i < 4; i++) out[sizeAt + size_t(i)] = char(bytes >> (8 * i));
    }
};

} // namespace

std::string toFile(const std::string& text) {
    return Writer(text).file();
}

std::string toText(const std::string& file) {
    return Reader(file).text();
}

std::vector<std::string> itemNames() {
    std::vector<std::string> names;
    for (const Table* table : {&projectTable, &songTable})
        for (const auto& [name, fields] : *table) names.push_back(name);
    return names;
}
