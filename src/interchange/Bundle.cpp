#include "interchange/Bundle.h"

#include "audiofiles/CSample.h"
#include "base/Paths.h"
#include "base/SafeFile.h"
#include "engine/CQV.h"
#include "engine/CompTypes.h"
#include "interchange/ScratchFolder.h"
#include "interchange/ZipFile.h"
#include "plugins/CVST.h"
#include "project/Project.h"
#include "project/ProjectAudio.h"
#include "project/ProjectFile.h"

#include <set>

namespace {

constexpr const char *audioSuffix = "_audio", *pluginList = "plug-ins.txt";

struct Packed {
    std::string entry, path;
};

/// The samples of a project stand, for as long as this lives, on links in a folder beside a project
/// of that name; whoever plays them goes on with the files that are open.
class StandIns {
public:
    StandIns(CQV* root, const ScratchFolder& folder, const CStr& name)
        : host(root), projectFile(host->projectFile), audioFolder(host->audioFolder) {
        const std::string audio = std::string(name.asChar()) + audioSuffix;
        std::filesystem::create_directory(folder.file(audio));
        for (CSample* sample : filedSamples(host)) stand(sample, folder.file(audio));
        host->projectFile = folder.file(std::string(name.asChar()) + ".qv").c_str();
        host->audioFolder = audio.c_str();
    }
    ~StandIns() {
        for (const auto& [sample, path] : former) sample->filename = path;
        host->projectFile = projectFile;
        host->audioFolder = audioFolder;
    }
    StandIns(const StandIns&) = delete;
    StandIns& operator=(const StandIns&) = delete;

    std::vector<Packed> files; ///< names in the audio folder, and what they stand for
    std::vector<CStr> missing;

private:
    void stand(CSample* sample, const std::string& folder) {
        former.push_back({sample, sample->filename});
        if (!fileExists(sample->filename)) {
            missing.push_back(sample->filename);
            return;
        }
        const CStr whole = extractFileName(sample->filename);
        const std::string stem = changeFileExt(whole, "").asChar(),
                          ext = extractFileExt(whole).asChar();
        std::string name = stem + ext;
        for (int i = 1; !taken.insert(name).second; i++)
            name = stem + "-" + std::to_string(i) + ext;
        std::error_code failed;
        const std::string link = folder + "/" + name;
        std::filesystem::create_symlink(sample->filename.asChar(), link, failed);
        if (failed) return;
        files.push_back({name, sample->filename.asChar()});
        sample->filename = link.c_str();
    }

    CQV* host;
    const CStr projectFile, audioFolder;
    std::vector<std::pair<CSample*, CStr>> former;
    std::set<std::string> taken;
};

void listPlugins(CComp* comp, std::set<std::string>& lines) {
    if (comp->type == compVST) {
        const auto* plugin = static_cast<CVST*>(comp);
        lines.insert(std::string(plugin->id.asChar()) + "\t" + plugin->fileName.asChar());
    }
    for (auto* channel : comp->outputs)
        for (auto* insert : channel->inserts) listPlugins(insert, lines);
}

std::string pluginLines(CQV* host) {
    std::set<std::string> lines;
    for (const auto* list : listsOf(host->comps, host->sends))
        for (auto* comp : *list) listPlugins(comp, lines);
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

} // namespace

DawResult packProject(const Project& project, const CStr& path, std::vector<CStr>& lost,
                      const DawWatch& watch) {
    const ScratchFolder scratch;
    const CStr name = changeFileExt(extractFileName(path), "");
    const std::string folder = std::string(name.asChar()) + "/", file = folder + name.asChar();
    const std::string projectFile = scratch.file(std::string(name.asChar()) + ".qv");
    if (scratch.path.empty()) return DawResult::notWritten;
    std::vector<Packed> audio;
    {
        const StandIns standing(project.host, scratch, name);
        for (const CStr& missing : standing.missing) lost.push_back(missing);
        audio = standing.files;
        if (!saveCopy(project, projectFile.c_str())) return DawResult::notWritten;
    }
    SafeFile target(path);
    ZipWriter zip(target.path().asChar());
    zip.addFile(file + ".qv", projectFile, true);
    zip.add(folder + pluginList, pluginLines(project.host));
    double done = 0.0;
    bool cancelled = false;
    for (const Packed& a : audio) {
        const auto told = [&](double part) {
            cancelled =
                watch && !watch(a.entry.c_str(), float((done + part) / double(audio.size())));
            return !cancelled;
        };
        if (!zip.addFile(file + audioSuffix + "/" + a.entry, a.path, false, told)) break;
        done += 1.0;
    }
    if (cancelled) return DawResult::cancelled;
    return zip.close() && target.commit() ? DawResult::good : DawResult::notWritten;
}
