#include "plugins/CVST.h"

#include "base/BlockView.h"
#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/OpenBlock.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "plugins/ParamReadings.h"
#include "plugins/PluginFile.h"
#include "plugins/PluginHooks.h"
#include "plugins/PluginPlaces.h"
#include "plugins/StateFiles.h"

#include <algorithm>
#include <utility>

namespace {

constexpr const char* title = "VST";
constexpr int missingProgram = -2; ///< in a state: the plug-in was not there

/// What a plug-in is called is not told by the name of its file.
bool manyNames(const CStr& file) {
    return PluginFile(file).format() != PluginFormat::vst2;
}

} // namespace

CVST::CVST(CQV* root) : PluginComp(root) {
    id = "VST";
    type = compVST;
}

// Opening.

bool CVST::open(bool setup) {
    id = changeFileExt(extractFileName(PluginFile(fileName).file), "");
    if (!find()) return false;
    if (!load(fileName)) {
        if (setup) showMsg(nullptr, title, "Failed to open " + id);
        return false;
    }
    if (setup) setupIO();
    if (const CStr name = loaded()->product(); manyNames(fileName) && !name.empty()) id = name;
    return true;
}

/// Until it is found, or nobody names another folder.
bool CVST::find() {
    for (;;) {
        const CStr path = allowedPlugin(host, fileName);
        if (!path.empty()) {
            fileName = path;
            return true;
        }
        if (!pluginHooks()->askFolders(id)) return false;
    }
}

std::unique_ptr<Plugin> CVST::make(const CStr& path) {
    const CStr former = folder;
    folder = PluginFile(path).folderOfLibrary();
    CStr why;
    std::unique_ptr<Plugin> made = pluginHooks()->load(path, asHost(), why);
    if (made) return made;
    folder = former;
    showStr(path + ": " + why);
    return nullptr;
}

bool CVST::load(const CStr& path) {
    std::unique_ptr<Plugin> made = make(path);
    if (!made) return false;
    take(std::move(made));
    return true;
}

/// It is loaded before blocks have to wait.
bool CVST::exchange(const CStr& path) {
    std::unique_ptr<Plugin> made = make(path);
    if (!made) {
        showMsg(nullptr, title, "Failed to open " + extractFileName(PluginFile(path).file));
        return false;
    }
    closeEditor();
    {
        const GraphHold hold(host);
        take(std::move(made));
        fileName = path;
        fixChannels();
        createBuffers(host->frames);
    }
    host->hostNotices.raise(HostNotice::graph | HostNotice::delays);
    return true;
}

bool CVST::become(const CStr& path) {
    if (!opened()) return false;
    PluginState::Bytes before = present();
    const std::vector<ParamReading> known = readParams(*this);
    if (!exchange(path)) return false;
    setAlike(*this, known);
    stepTo("Format of " + id, std::move(before));
    return true;
}

/// What was done is a step: it was so before, and is now as it stands.
void CVST::stepTo(const CStr& name, PluginState::Bytes before) {
    state.hold(std::move(before));
    CUndo* step = host->undoStart(name, this, {.comp = CompNotice::program});
    step->asSwap(&state, new PluginState(present()));
    host->undoEnd(step, true);
}

PluginIdentity CVST::missing() const {
    PluginIdentity found;
    if (opened() || kept.empty()) return found;
    CMemoryStream stream;
    stream.write(kept.data(), int(kept.size()));
    stream.seek(0, seekStart);
    eachBlock(&stream, stream.size, [&found](const CStr& block, BlockView& body) {
        if (block == PluginIdentity::block) found = PluginIdentity::read(body);
    });
    return found;
}

bool CVST::becomeMissing(const CStr& path) {
    const PluginIdentity was = missing();
    if (!was.known()) return false;
    PluginState::Bytes before = present();
    if (!exchange(path)) return false;
    setAlike(*this, was.params);
    kept.clear();
    stepTo("Other format of " + id, std::move(before));
    return true;
}

void CVST::loseAgain(const CStr& file, std::vector<unsigned char> content) {
    closeEditor();
    {
        const GraphHold hold(host);
        PluginComp::clear();
    }
    fileName = file;
    kept = std::move(content);
    notices.raise(CompNotice::program);
}

bool CVST::locate(const CStr& path) {
    if (opened()) return false;
    allowPlugin(path);
    const CStr name = id, found = PluginFile(path, PluginFile(fileName).inside).text();
    const GraphHold hold(host);
    if (!load(found)) {
        showMsg(nullptr, title, "Failed to open " + extractFileName(path));
        return false;
    }
    CMemoryStream stream;
    stream.write(kept.data(), int(kept.size()));
    stream.seek(0, seekStart);
    bool sawBank = false;
    eachBlock(&stream, stream.size, [&](const CStr& block, BlockView& body) {
        if (block != "filename" && block != "plugin")
            readBlock(block, body, int(body.left()), sawBank);
    });
    fileName = found;
    id = name;
    kept.clear();
    fixChannels();
    createBuffers(host->frames);
    host->hostNotices.raise(HostNotice::graph | HostNotice::delays);
    host->setModified();
    return true;
}

bool CVST::reload() {
    CStr why;
    std::unique_ptr<Plugin> made = pluginHooks()->load(fileName, asHost(), why);
    if (made) replace(std::move(made));
    return opened() && why.empty();
}

void CVST::clear() {
    PluginComp::clear();
    bank = {};
    kept.clear();
    fileName = chunkPath = "";
}

CComp* CVST::copy() {
    auto* twin = new CVST(host);
    twin->copyData(this);
    twin->copyIO(this);
    return twin;
}

// Projects.

void CVST::write(CStream* stream) {
    if (!opened() && !kept.empty()) {
        stream->write(kept.data(), int(kept.size()));
        return;
    }
    const auto text = [stream](const char* block, const CStr& content) {
        stream->writeId(block, content.length() + int(sizeof(int)));
        stream->writeStr(content);
    };
    const bool older = PluginFile(fileName).format() == PluginFormat::vst2;
    text(older ? "filename" : "plugin", fileName);
    text("chunkpath", chunkPath);
    if (Plugin* p = loaded()) {
        const Plugin::Bytes chunk = presentBank(*p, bank);
        const auto put = [&](const char* block, WordOrder order) {
            const OpenBlock open(stream, block);
            writeBank(stream, *p, bank, chunk, order);
        };
        put("chunk2", WordOrder::file);
        if (older) put("chunk", WordOrder::block);
    }
    writeIntBlock(stream, "mch", mch);
    writeIntBlock(stream, "prog", pendingProg >= 0 ? int(pendingProg) : getProg());
    stream->writeId("macro", int(sizeof(int)) * (1 + macroCount));
    stream->writeInt(macroCount);
    for (const int param : macroParams) stream->writeInt(param);
    if (Plugin* p = loaded()) {
        const OpenBlock open(stream, PluginIdentity::block);
        PluginIdentity::of(*this, *p).write(stream);
    }
}

void CVST::read(CStream* stream, int end) {
    clear();
    const int64_t from = stream->getPos();
    std::vector<unsigned char> content(size_t(std::clamp<int64_t>(end - from, 0, stream->left())));
    stream->read(content.data(), int(content.size()));
    stream->seek(from, seekStart);
    const CStr name = id;
    bool sawBank = false;
    eachBlock(stream, end, [&](const CStr& block, BlockView& body) {
        if (block != "filename" && block != "plugin")
            return readBlock(block, body, int(body.left()), sawBank);
        fileName = body.readStr();
        open(false);
        deleteAll<CObject>(outPorts); // those of the project follow
        id = name;
    });
    if (!opened()) kept = std::move(content);
}

void CVST::readBlock(const CStr& name, CStream& body, int size, bool& sawBank) {
    if (name == "chunkpath") chunkPath = body.readStr();
    if (name == "mch") mch = std::clamp(body.readInt(), -1, 15);
    if (name == "prog") readProgramNumber(body.readInt());
    if (name == "macro") {
        const int count = std::clamp(body.readInt(), 0, int(macroCount));
        for (int i = 0; i < count; i++) setMacroParam(i, body.readInt());
    }
    if (name != "chunk2" && (name != "chunk" || sawBank)) return;
    const bool newer = name == "chunk2";
    sawBank = sawBank || newer;
    CMemoryStream content;
    content.copy(&body, size);
    readState(content, newer ? WordOrder::file : WordOrder::block, newer ? "chunk2" : "chunk");
}

/// Behind the state in files: it goes to the plug-in at once, as a change of the program would
/// forget what the state has made of it.
void CVST::readProgramNumber(int index) {
    if (index < 0 || index >= numProgs()) return;
    changeWhole([this, index](Plugin& p) { bank.play(p, index); });
    curProg = index;
}

void CVST::readState(CStream& body, WordOrder order, const char* block) {
    if (!opened()) return;
    BankResult result = BankResult::good;
    changeWhole([&](Plugin& p) {
        int size = 0;
        result = readBank(&body, p, bank, order, size);
        bank.takeCurrent(p);
    });
    if (result != BankResult::good)
        showMsg(nullptr, title, "'" + fileName + "' caused an error reading data " + block);
}

void CVST::giveFile(int index, const CStr& path) {
    if (!opened()) return;
    PluginState::Bytes before = present();
    changeWhole([&](Plugin& p) {
        p.setFile(index, path);
        bank.takeCurrent(p);
    });
    stepTo("File of " + id, std::move(before));
}

// Banks and programs.

/// Which plug-in it is, the number of its program, and a bank; of a missing one the content of the
/// project.
PluginState::Bytes CVST::present() {
    CMemoryStream stream;
    stream.writeStr(fileName);
    stream.writeInt(opened() ? getProg() : int(missingProgram));
    if (!opened()) {
        stream.write(kept.data(), int(kept.size()));
        return {stream.data, stream.data + stream.getPos()};
    }
    const Plugin::Bytes chunk = presentBank(*loaded(), bank);
    writeBank(&stream, *loaded(), bank, chunk, WordOrder::file);
    return {stream.data, stream.data + stream.getPos()};
}

void CVST::restore(const PluginState::Bytes& bytes) {
    CMemoryStream stream;
    stream.write(bytes.data(), int(bytes.size()));
    stream.seek(0, seekStart);
    const CStr file = stream.readStr();
    const int program = stream.readInt();
    if (program == missingProgram)
        return loseAgain(file, {stream.data + stream.getPos(), stream.data + stream.size});
    if (!(opened() && file == fileName) && !exchange(file)) return;
    changeWhole([&](Plugin& p) {
        int size = 0;
        readBank(&stream, p, bank, WordOrder::file, size);
        bank.play(p, program);
    });
}

/// When a step is taken back or done again; at first the plug-in has the state already.
void CVST::perform(CUndoItem* item, int op) {
    constexpr int firstTime = 1;
    if (item->object == &state && op != firstTime) stateAsked = true;
}

void CVST::idle() {
    if (stateAsked.exchange(false) && state.held()) restore(*state.held());
    PluginComp::idle();
}

template <class F>
bool CVST::readFile(const CStr& path, F&& reader) {
    CFileStream stream(path, 0);
    if (!opened() || !stream.isOpen()) return false;
    if (loaded()->uniqueId() == 0) {
        showMsg(nullptr, title, path + " - Plugin id doesn't match id in file");
        return false;
    }
    BankResult result = BankResult::good;
    int size = 0;
    PluginState::Bytes before = present();
    changeWhole([&](Plugin& p) {
        result = reader(stream, p, size);
        bank.takeCurrent(p);
    });
    if (result == BankResult::good) {
        stepTo("Open", std::move(before));
        return true;
    }
    showMsg(nullptr, title, "Error opening chunk " + asStr(size) + " " + path);
    return false;
}

bool CVST::openBank(const CStr& path) {
    const bool good = readFile(path, [this](CStream& stream, Plugin& p, int& size) {
        return readBank(&stream, p, bank, WordOrder::file, size);
    });
    if (good) chunkPath = path;
    return good;
}

bool CVST::openProgram(const CStr& path) {
    return readFile(
        path, [](CStream& stream, Plugin& p, int& size) { return readProgram(&stream, p, size); });
}

template <class F>
bool CVST::writeFile(const CStr& path, F&& writer) {
    if (!opened()) return false;
    CMemoryStream stream;
    writer(stream, *loaded());
    if (stream.saveToFile(path)) return true;
    showMsg(nullptr, "Error", "Could not write file " + path);
    return false;
}

bool CVST::saveBank(const CStr& path) {
    return writeFile(path, [this](CStream& stream, Plugin& p) {
        const Plugin::Bytes chunk = presentBank(p, bank);
        writeBank(&stream, p, bank, chunk, WordOrder::file);
    });
}

bool CVST::saveProgram(const CStr& path) {
    return writeFile(path, [](CStream& stream, Plugin& p) { writeProgram(&stream, p); });
}

void CVST::saveFXPToStream(CStream* stream) {
    if (Plugin* p = loaded()) writeProgram(stream, *p);
}

bool CVST::saveState(const CStr& path) {
    const PluginFile what(fileName);
    if (!opened()) return false;
    CMemoryStream stream;
    const Plugin::Bytes chunk = presentBank(*loaded(), bank);
    if (what.format() == PluginFormat::vst2) {
        writeBank(&stream, *loaded(), bank, chunk, WordOrder::file);
    } else {
        const Plugin::Bytes preset = presetOf(what.format(), what.inside, chunk);
        if (preset.empty()) return false;
        stream.write(preset.data(), int(preset.size()));
    }
    return stream.saveToFile(path);
}

bool CVST::takeState(const CStr& path) {
    const PluginFile what(fileName);
    bool good = false;
    if (!opened()) return false;
    changeWhole([&](Plugin& p) {
        if (what.format() == PluginFormat::vst2) {
            CFileStream stream(path, 0);
            int size = 0;
            good = stream.isOpen() &&
                   readBank(&stream, p, bank, WordOrder::file, size) == BankResult::good;
        } else if (const auto chunk = chunkOf(what.format(), what.inside, path)) {
            good = p.setChunk(*chunk, true);
        }
    });
    return good;
}

bool isFailedPlugin(const CComp* comp) {
    return comp->type == compVST && static_cast<const CVST*>(comp)->failed();
}

CStr healthText(float load, int crashes, unsigned faults) {
    const auto counted = [](int count, const char* one, const char* more) {
        return count == 0 ? CStr() : ", " + asStr(count) + (count == 1 ? one : more);
    };
    return asStrFormat(double(load) * 100, "%.1f") + " % of a block" +
           counted(crashes, " crash", " crashes") + counted(int(faults), " fault", " faults");
}

CStr pluginHealth(const CComp* comp) {
    if (comp->type != compVST) return "";
    const auto* plugin = static_cast<const CVST*>(comp);
    if (!plugin->opened()) return "Its file was not found";
    return healthText(plugin->workShare, plugin->loaded()->crashes(), plugin->faults);
}

std::unique_ptr<CVST> newPlugin(CQV* host, const CStr& path) {
    auto made = std::make_unique<CVST>(host);
    made->init();
    made->fileName = path;
    if (!made->open(true)) return nullptr;
    made->createBuffers(host->frames);
    return made;
}
