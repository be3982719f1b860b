#include "ProjectMask.h"

#include "base/CStream.h"
#include "engine/CComp.h"
#include "engine/MidiBytes.h"
#include "project/ProjectUi.h"
#include "project/ProjectWriter.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "ui/Song.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

namespace {

constexpr unsigned selectedBit = 1, openBit = 2;
constexpr int tempoBytes = 24; ///< fewer than its block tells

/// A way through bytes, which may blank some.
class Cursor {
public:
    Cursor(std::string& content, size_t from, size_t to) : bytes(&content), at(from), end(to) {}

    std::string* bytes;
    size_t at, end;

    bool done() const { return at >= end; }
    int readInt() {
        int32_t v = 0;
        std::memcpy(&v, bytes->data() + at, sizeof(v));
        at += sizeof(v);
        return v;
    }
    int readByte() { return static_cast<unsigned char>((*bytes)[at++]); }
    std::string readText() {
        const auto length = size_t(readInt());
        at += length;
        return bytes->substr(at - length, length);
    }
    void skip(size_t count) { at += count; }
    void blank(size_t count) {
        std::memset(bytes->data() + at, 0, count);
        at += count;
    }
    void blankBits(unsigned bits) {
        (*bytes)[at] = char(static_cast<unsigned char>((*bytes)[at]) & ~bits);
    }
};

using Mask = void (*)(Cursor& in);

void maskAll(Cursor& in) {
    in.blank(in.end - in.at);
}

/// The selected bit of each event of a list, `before` bytes behind its distance.
template <class Rest>
void maskEvents(Cursor& in, size_t before, Rest&& rest) {
    for (int left = in.readInt(); left > 0; left--) {
        in.skip(sizeof(int32_t) + before);
        in.blankBits(selectedBit);
        rest();
    }
}

void maskNotes(Cursor& in) {
    maskEvents(in, 0, [&in] {
        in.skip(1);
        if (noteOn(in.readInt())) in.skip(4);
    });
}

void maskDrums(Cursor& in) {
    maskEvents(in, 1, [&in] {
        in.skip(5);
        in.skip(size_t(in.readByte()) * 5);
    });
}

void maskClips(Cursor& in) {
    maskEvents(in, 0, [&in] { in.skip(76); });
}

void maskOldClips(Cursor& in) {
    maskEvents(in, 0, [&in] { in.skip(48); });
}

void maskPoints(Cursor& in) {
    in.skip(4);
    maskEvents(in, 0, [&in] { in.skip(10); });
}

void maskComp(Cursor& in) {
    in.skip(11);
    in.readText();
    in.skip(4);
    in.blankBits(selectedBit);
}

void maskTrack(Cursor& in) {
    in.skip(4);
    in.blankBits(selectedBit | openBit);
    in.skip(4);
    in.readText();
    in.blank(12); // heights, scroll
    in.skip(8);
    in.blank(4); // row height
}

void maskLane(Cursor& in) {
    in.readText();
    in.blank(6); // flags, visible, height
}

void maskPart(Cursor& in) {
    in.skip(19);
    in.blankBits(selectedBit);
}

void maskSongTrack(Cursor& in) {
    in.blankBits(selectedBit);
}

void maskOptions(Cursor& in) {
    in.skip(8);
    in.blank(4); // zoom
}

void maskProgram(Cursor& in) {
    in.blank(4); // the position
}

void maskStrip(Cursor& in) {
    in.skip(20);
    in.blank(4); // how the mixer shows it
}

void maskMixer(Cursor& in) {
    while (!in.done()) {
        const std::string name = in.readText();
        const auto told = size_t(in.readInt());
        if (name == "mxv")
            in.blank(told); // the rows of strips
        else
            in.skip(told);
    }
}

const std::map<std::string, Mask> masks = {
    {"mixer", maskMixer},      {"strip2", maskStrip},   {"audiodir", maskAll},
    {"page", maskAll},         {"pagei", maskAll},      {"pageModular", maskAll},
    {"modsb", maskAll},        {"comped", maskAll},     {"compedi", maskAll},
    {"mixed", maskAll},        {"cmed", maskAll},       {"trackRow", maskAll},
    {"tracked", maskAll},      {"arped", maskAll},      {"editored", maskAll},
    {"edopt", maskAll},        {"ed-noteh", maskAll},   {"editorpp", maskAll},
    {"amarker", maskAll},      {"comp2", maskComp},     {"insert2", maskComp},
    {"track", maskTrack},      {"sub", maskLane},       {"prog", maskProgram},
    {"ptrack", maskSongTrack}, {"part", maskPart},      {"options", maskOptions},
    {"mevents", maskNotes},    {"devents", maskDrums},  {"aevents2", maskClips},
    {"aevents", maskOldClips}, {"amevents", maskPoints}};

void maskBlocks(Cursor in);

/// A song is a row of blocks behind the head of its component: leads there.
bool isSong(Cursor& in) {
    in.skip(1);
    if (in.readByte() != compSeq) return false;
    in.skip(9);
    in.readText();
    in.skip(16);
    return true;
}

void maskBlocks(Cursor in) {
    while (!in.done()) {
        const std::string name = in.readText();
        const auto told = size_t(in.readInt());
        const size_t next = in.at + (name == "tempo" ? tempoBytes : told);
        Cursor block(*in.bytes, in.at, next);
        if (const auto mask = masks.find(name); mask != masks.end()) mask->second(block);
        if (Cursor song(*in.bytes, in.at, next); name == "comp2" && isSong(song)) maskBlocks(song);
        in.at = next;
    }
}

/// Its block has the length of the name.
void cutAudioFolder(std::string& bytes) {
    Cursor in(bytes, 0, bytes.size());
    in.readText();
    while (!in.done()) {
        const size_t from = in.at;
        const std::string name = in.readText();
        in.at += size_t(in.readInt());
        if (name == "audiodir") return void(bytes.erase(from, in.at - from));
    }
}

/// Rows of a height of their own have a block for it, others none.
void cutRows(std::string& bytes) {
    Cursor in(bytes, 0, bytes.size());
    in.readText();
    while (!in.done()) {
        const std::string name = in.readText();
        const size_t sizeAt = in.at, start = sizeAt + 4;
        int told = in.readInt();
        Cursor song(bytes, start, start + size_t(told));
        const bool inside = name == "comp2" && isSong(song);
        while (inside && song.at < start + size_t(told)) {
            const size_t from = song.at;
            const std::string block = song.readText();
            const int size = song.readInt();
            song.skip(block == "tempo" ? tempoBytes : size_t(size));
            if (block != "trackRow") continue;
            told -= int(song.at - from);
            bytes.erase(from, song.at - from);
            song.at = from;
        }
        std::memcpy(&bytes[sizeAt], &told, sizeof told);
        in.at = start + size_t(told);
        in.end = bytes.size();
    }
}

} // namespace

std::string projectContent(CQV* host, CMixer* mixer) {
    ProjectUi ui;
    CMemoryStream stream;
    const CSeq* seq = songOf(host);
    CPart* edited = seq ? seq->editorComp->part() : nullptr;
    if (edited) seq->editorComp->setPart(nullptr); // else there would be a block more
    writeProject({host, mixer, &ui}, &stream);
    if (edited) seq->editorComp->setPart(edited);
    std::string bytes(reinterpret_cast<const char*>(stream.data), size_t(stream.getSize()));
    Cursor in(bytes, 0, bytes.size());
    in.readText();
    maskBlocks(in);
    cutRows(bytes);
    cutAudioFolder(bytes);
    return bytes;
}

std::string blockAt(const std::string& project, size_t place) {
    std::string bytes = project, path;
    Cursor in(bytes, 0, bytes.size());
    in.readText();
    while (!in.done()) {
        const std::string name = in.readText();
        const auto told = size_t(in.readInt());
        const size_t start = in.at, next = start + (name == "tempo" ? tempoBytes : told);
        if (place < next) {
            path += (path.empty() ? "" : "/") + name;
            Cursor song(bytes, start, next);
            if (name != "comp2" || !isSong(song) || place < song.at)
                return path + " + " + std::to_string(int(place) - int(start));
            in = song;
            continue;
        }
        in.at = next;
    }
    return path;
}

std::set<std::string> maskedBlocks() {
    std::set<std::string> names;
    for (const auto& [name, mask] : masks) names.insert(name);
    return names;
}

std::set<std::string> toldBlocks() {
    std::set<std::string> names;
    std::ifstream document(FILES_DOCUMENT);
    std::string line;
    while (std::getline(document, line) && line != "### What is no change") {
    }
    while (std::getline(document, line) && line.rfind("#", 0) != 0) {
        if (line[0] != '|') continue;
        std::istringstream cell(line.substr(0, line.find('|', 1)));
        std::string before, name; // names stand between back quotes
        while (std::getline(cell, before, '`') && std::getline(cell, name, '`')) names.insert(name);
    }
    return names;
}
