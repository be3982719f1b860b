#include "plugins/vst2/BankFiles.h"

#include "base/CStream.h"
#include "plugins/Plugin.h"
#include "plugins/vst2/Vst2Abi.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace {

using vst2::fourLetters;

constexpr int container = fourLetters("CcnK");
constexpr int chunkBank = fourLetters("FBCh"), plainBank = fourLetters("FxBk");
constexpr int chunkProgram = fourLetters("FPCh"), plainProgram = fourLetters("FxCk");
constexpr int version = 1, fileByteSize = 0;
constexpr int nameBytes = 28, nameWords = nameBytes / 4, reservedWords = 32;
constexpr int wordBytes = 4, wordsOfHead = 4, wordsToName = 7;

/// Words in one of the two orders.
class Words {
public:
    Words(CStream* s, WordOrder o) : stream(s), swapped(o == WordOrder::file) {}

    void put(int word) { swapped ? stream->writeIntSwap(word) : stream->writeInt(word); }
    void put(float number) { put(std::bit_cast<int>(number)); }
    void putZeros(int words) {
        for (int i = 0; i < words; i++) put(0);
    }
    void putName(const CStr& name) {
        char room[nameBytes] = {};
        std::strncpy(room, name.asChar(), nameBytes - 1);
        stream->write(room, nameBytes);
    }
    void putHead(int kind, const Plugin& plugin, int count) {
        for (const int word :
             {container, fileByteSize, kind, version, int(plugin.uniqueId()), version, count})
            put(word);
    }
    void putChunk(const Plugin::Bytes& bytes) {
        put(int(bytes.size()));
        stream->write(bytes.data(), int(bytes.size()));
    }

    int get() { return swapped ? stream->readIntSwap() : stream->readInt(); }
    float getFloat() {
        const float number = std::bit_cast<float>(get());
        return std::isfinite(number) ? number : 0.0f;
    }
    CStr getName() {
        char room[nameBytes + 1] = {};
        stream->read(room, nameBytes);
        return CStr(room);
    }
    void skip(int words) { stream->seek(int64_t(words) * wordBytes, seekCurrent); }
    bool has(int64_t bytes) { return bytes >= 0 && stream->left() >= bytes; }
    bool hasWords(int64_t words) { return has(words * wordBytes); }

    /// False where it is not all there, or the plug-in takes none.
    bool getChunk(const Plugin& plugin, Plugin::Bytes& bytes, int& size) {
        size = hasWords(1) ? get() : 0;
        if (!plugin.hasChunks() || size < 0 || !has(size)) return false;
        bytes.resize(size_t(size));
        return stream->read(bytes.data(), size) == size;
    }

private:
    CStream* stream;
    bool swapped;
};

void putProgram(Words& words, const Plugin& plugin, const ProgramBank::Program& program) {
    words.putHead(plainProgram, plugin, int(program.values.size()));
    words.putName(program.name);
    for (const float value : program.values) words.put(value);
}

/// A program from its count on.
bool getValues(Words& words, const Plugin& plugin, ProgramBank::Program& program) {
    if (!words.hasWords(1 + nameWords)) return false;
    const int count = words.get();
    program.name = words.getName();
    if (count < 0 || count > plugin.numParams() || !words.hasWords(count)) return false;
    for (int i = 0; i < count; i++) program.values.push_back(words.getFloat());
    return true;
}

bool getPrograms(Words& words, const Plugin& plugin, int count, ProgramBank& bank) {
    const int most = std::max(plugin.numPrograms(), 1);
    if (count < 0 || count > most || !words.hasWords(int64_t(count) * (wordsToName + nameWords)))
        return false;
    for (int i = 0; i < count; i++) {
        words.skip(wordsToName - 1);
        if (!getValues(words, plugin, bank.programs.emplace_back())) return false;
    }
    return true;
}

/// What it has already is not told again: some that are told the very value that they show sound
/// another way from then on.
void tell(Plugin& plugin, const ProgramBank::Program& program) {
    plugin.renameProgram(program.name);
    for (size_t i = 0; i < program.values.size(); i++)
        if (plugin.param(int(i)) != program.values[i]) plugin.setParam(int(i), program.values[i]);
}

BankResult tellChunk(Plugin& plugin, const Plugin::Bytes& bytes, bool whole) {
    return plugin.setChunk(bytes, whole) ? BankResult::good : BankResult::threw;
}

ProgramBank::Program currentProgram(Plugin& plugin) {
    ProgramBank::Program made{plugin.currentProgramName(), {}};
    for (int i = 0; i < plugin.numParams(); i++) made.values.push_back(plugin.param(i));
    return made;
}

/// The kind of what is read, behind whose count the stream stands; `count` is that.
int getHead(Words& words, int& count) {
    if (!words.hasWords(wordsToName)) return 0;
    words.skip(2);
    const int kind = words.get();
    words.skip(wordsOfHead - 3 + 2);
    count = words.get();
    return kind;
}

} // namespace

void ProgramBank::takeAll(Plugin& plugin) {
    programs.clear();
    if (plugin.hasChunks()) return;
    const int now = plugin.program(), count = std::max(plugin.numPrograms(), 1);
    for (int i = 0; i < count; i++) {
        if (count > 1) plugin.setProgram(i);
        programs.push_back(currentProgram(plugin));
    }
    if (count > 1) plugin.setProgram(now);
}

void ProgramBank::takeCurrent(Plugin& plugin) {
    if (plugin.hasChunks()) return;
    const int now = plugin.numPrograms() > 1 ? plugin.program() : 0;
    if (now >= 0 && size_t(now) < programs.size()) programs[size_t(now)] = currentProgram(plugin);
}

void ProgramBank::play(Plugin& plugin, int index) const {
    if (plugin.program() != index) plugin.setProgram(index);
    if (!plugin.hasChunks() && index >= 0 && size_t(index) < programs.size())
        tell(plugin, programs[size_t(index)]);
}

Plugin::Bytes presentBank(Plugin& plugin, ProgramBank& bank) {
    bank.takeCurrent(plugin);
    return plugin.hasChunks() ? plugin.chunk(true) : Plugin::Bytes();
}

void writeBank(CStream* stream, Plugin& plugin, const ProgramBank& bank, const Plugin::Bytes& chunk,
               WordOrder order) {
    Words words(stream, order);
    const bool chunks = plugin.hasChunks();
    words.putHead(chunks ? chunkBank : plainBank, plugin,
                  chunks ? plugin.numPrograms() : int(bank.programs.size()));
    words.putZeros(reservedWords);
    if (chunks) return words.putChunk(chunk);
    for (const auto& program : bank.programs) putProgram(words, plugin, program);
}

void writeProgram(CStream* stream, Plugin& plugin) {
    Words words(stream, WordOrder::file);
    if (!plugin.hasChunks()) return putProgram(words, plugin, currentProgram(plugin));
    words.putHead(chunkProgram, plugin, plugin.numParams());
    words.putZeros(nameWords);
    words.putChunk(plugin.chunk(false));
}

BankResult readBank(CStream* stream, Plugin& plugin, ProgramBank& bank, WordOrder order,
                    int& size) {
    Words words(stream, order);
    int count = 0;
    const int kind = getHead(words, count);
    if (!words.hasWords(reservedWords)) return BankResult::damaged;
    words.skip(reservedWords);
    Plugin::Bytes bytes;
    if (kind == chunkBank && words.getChunk(plugin, bytes, size))
        return tellChunk(plugin, bytes, true);
    ProgramBank read;
    if (kind != plainBank || !getPrograms(words, plugin, count, read)) return BankResult::damaged;
    for (size_t i = 0; i < read.programs.size(); i++) {
        plugin.setProgram(int(i));
        tell(plugin, read.programs[i]);
        if (i < bank.programs.size()) bank.programs[i] = currentProgram(plugin);
    }
    plugin.setProgram(0);
    bank.play(plugin, 0);
    return BankResult::good;
}

BankResult readProgram(CStream* stream, Plugin& plugin, int& size) {
    Words words(stream, WordOrder::file);
    int count = 0;
    const int kind = getHead(words, count);
    if (!words.hasWords(nameWords)) return BankResult::damaged;
    Plugin::Bytes bytes;
    if (kind == chunkProgram) {
        words.skip(nameWords);
        return words.getChunk(plugin, bytes, size) ? tellChunk(plugin, bytes, false)
                                                   : BankResult::damaged;
    }
    ProgramBank::Program program;
    stream->seek(-wordBytes, seekCurrent);
    if (kind != plainProgram || !getValues(words, plugin, program)) return BankResult::damaged;
    tell(plugin, program);
    return BankResult::good;
}
