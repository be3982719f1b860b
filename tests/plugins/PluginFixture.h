#pragma once

#include "base/CIniFile.h"
#include "base/CStream.h"
#include "engine/StripFixture.h"
#include "plugins/CVST.h"
#include "plugins/MadeFile.h"
#include "plugins/MadePlugin.h"
#include "support/Told.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>

/// A host that knows one folder of plug-ins, with copies of the made one under the names that a
/// test asks for.
class PluginFixture : public StripFixture {
public:
    explicit PluginFixture(int frames = 256) : StripFixture(frames) {
        char room[] = "/tmp/plugins-XXXXXX";
        folder = mkdtemp(room);
        inifile = (folder + "/settings.ini").c_str();
        CIniFile(inifile).writeString("VSTFolders", "0", folder.c_str());
    }
    ~PluginFixture() {
        inifile = former;
        std::filesystem::remove_all(folder);
    }

    std::string file(const std::string& name) const { return madeFile(folder, name); }
    /// Complete, linked nowhere, owned by the caller; null where it does not open.
    CVST* plug(const std::string& name) { return newPlugin(host, file(name).c_str()).release(); }
    /// In the graph, cabled to the audio out.
    CVST* addPlug(const std::string& name) {
        CVST* c = plug(name);
        {
            const GraphHold hold(host);
            host->comps.add(c);
        }
        connect(c);
        return c;
    }
    /// An insert of the strip of a new signal.
    CVST* insert(const std::string& name) {
        signal = addSignal();
        CVST* c = plug(name);
        const GraphHold hold(host);
        signal->output()->inserts.add(c);
        return c;
    }
    /// What the latest plug-in from that file has seen.
    MadePlugin* seen(const std::string& name) const {
        void* library = dlopen(file(name).c_str(), RTLD_LAZY);
        auto* latest = reinterpret_cast<MadePlugin* (*)()>(dlsym(library, "latestMade"));
        return latest();
    }
    /// As if the user were at the window of the plug-in: 0 moves a parameter, 1 and 2 begin and end
    /// a gesture, 3 moves it on a thread of its own, 4 has other outputs, 5 wants
    /// another size.
    static void hand(MadePlugin* p, int deed, int index, float to = 0.0f) {
        p->effect.dispatcher(&p->effect, 50, deed, index, nullptr, to);
    }
    static std::string bytesOf(CComp* c) {
        CMemoryStream stream;
        c->write(&stream);
        return {reinterpret_cast<char*>(stream.data), size_t(stream.getPos())};
    }
    static void read(CComp* c, const std::string& bytes) {
        CMemoryStream stream;
        stream.write(bytes.data(), int(bytes.size()));
        stream.seek(0, seekStart);
        c->read(&stream, int(bytes.size()));
    }

    SignalComp* signal = nullptr;
    std::string folder;

private:
    const CStr former = inifile;
};
