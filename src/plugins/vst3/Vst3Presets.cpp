#include "plugins/vst3/Vst3Presets.h"

#include "base/CStream.h"
#include "base/CStringList.h"
#include "base/Paths.h"

#include <algorithm>
#include <string>

// The file: "VST3", a version, the key of the plug-in in 32 letters, and where its list stands. The
// list: "List", a count, and of each piece four letters, where it stands and its bytes, 64 bits
// each. All are little-endian.

namespace {

constexpr int deepest = 4, mostFiles = 4096, keyLetters = 32, tagLetters = 4, mostPieces = 128;
constexpr int64_t longest = 64 << 20;

/// As a folder is called after it.
CStr folderName(const CStr& of) {
    std::string name = of.asChar();
    std::ranges::replace_if(
        name, [](char c) { return std::string("\\/:*?\"<>|").find(c) != std::string::npos; }, '_');
    return CStr(name.c_str()).trim();
}

void collect(const CStr& folder, int depth, std::vector<CStr>& found) {
    CStringList folders, files;
    if (!readDir(folder, ".vstpreset", &folders, &files, true)) return;
    for (int i = 0; i < files.count() && int(found.size()) < mostFiles; i++)
        found.push_back(addSep(folder) + files.get(i));
    for (int i = 0; i < folders.count() && depth < deepest; i++)
        collect(addSep(folder) + folders.get(i), depth + 1, found);
}

CStr letters(CStream& stream, int count) {
    std::string text(size_t(count), '\0');
    stream.read(text.data(), count);
    return text.c_str();
}

int64_t readWide(CStream& stream) {
    int64_t number = -1;
    stream.read(&number, int(sizeof number));
    return number;
}

bool readPiece(CStream& stream, int64_t at, int64_t bytes, std::vector<char>& into) {
    if (at < 0 || bytes < 0 || bytes > longest || at > stream.getSize() - bytes) return false;
    into.resize(size_t(bytes));
    stream.seek(at, seekStart);
    return stream.read(into.data(), int(bytes)) == int(bytes);
}

} // namespace

std::vector<CStr> vst3Presets(const CStr& maker, const CStr& name) {
    const CStr own = folderName(maker) + "/" + folderName(name);
    if (maker.empty() || name.empty()) return {};
    std::vector<CStr> found;
    for (const CStr& root :
         {addSep(getHomeFolder()) + ".vst3/presets/", CStr("/usr/share/vst3/presets/"),
          CStr("/usr/local/share/vst3/presets/")})
        collect(root + own, 0, found);
    const auto before = [](const CStr& a, const CStr& b) {
        return compareText(extractFileName(a), extractFileName(b)) < 0;
    };
    const auto same = [](const CStr& a, const CStr& b) {
        return sameText(extractFileName(a), extractFileName(b));
    };
    std::ranges::stable_sort(found, before);
    found.erase(std::unique(found.begin(), found.end(), same), found.end());
    return found;
}

std::optional<Vst3PresetState> readVst3Preset(const CStr& path, const CStr& key) {
    CFileStream stream(path, 0);
    if (!stream.isOpen() || letters(stream, tagLetters) != "VST3") return std::nullopt;
    stream.readInt(); // version
    if (!sameText(letters(stream, keyLetters), key)) return std::nullopt;
    const int64_t list = readWide(stream);
    if (list < 0 || list > stream.getSize()) return std::nullopt;
    stream.seek(list, seekStart);
    if (letters(stream, tagLetters) != "List") return std::nullopt;
    const int count = stream.readInt();
    if (count < 0 || count > mostPieces) return std::nullopt;
    Vst3PresetState state;
    for (int i = 0; i < count; i++) {
        const CStr tag = letters(stream, tagLetters);
        const int64_t at = readWide(stream), bytes = readWide(stream), next = stream.getPos();
        std::vector<char>* into = tag == "Comp"   ? &state.played
                                  : tag == "Cont" ? &state.known
                                                  : nullptr;
        if (into && !readPiece(stream, at, bytes, *into)) return std::nullopt;
        stream.seek(next, seekStart);
    }
    return state;
}

std::string writeVst3Preset(const CStr& key, const Vst3PresetState& state) {
    constexpr int32_t version = 1;
    constexpr int64_t headBytes = 2 * tagLetters + keyLetters + int64_t(sizeof(int64_t));
    std::string text, list;
    const auto put = [](std::string& to, auto number) {
        to.append(reinterpret_cast<const char*>(&number), sizeof number);
    };
    int32_t count = 0;
    const auto piece = [&](const char* tag, const std::vector<char>& bytes) {
        list += tag;
        put(list, headBytes + int64_t(text.size()));
        put(list, int64_t(bytes.size()));
        text.append(bytes.begin(), bytes.end());
        count++;
    };
    piece("Comp", state.played);
    if (!state.known.empty()) piece("Cont", state.known);
    std::string name = key.asChar(), head = "VST3";
    name.resize(keyLetters, ' ');
    put(head, version);
    head += name;
    put(head, headBytes + int64_t(text.size()));
    std::string tail = "List";
    put(tail, count);
    return head + text + tail + list;
}
