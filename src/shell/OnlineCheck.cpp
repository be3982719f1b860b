#include "shell/OnlineCheck.h"

#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "online/OnlineJob.h"
#include "shell/CMainWin.h"
#include "ui/CProgressWin.h"
#include "ui/Options.h"

#include <chrono>
#include <cmath>
#include <utility>

namespace {

constexpr const char *title = "Check for updates", *addOnSection = "add-ons";
constexpr const char *onlineSection = "online", *dayKey = "day";
constexpr int pauseMs = 5;

int today() {
    using namespace std::chrono;
    return int(floor<days>(system_clock::now()).time_since_epoch().count());
}

CStr text(const std::string& s) {
    return s.c_str();
}

CStr nameOf(const CatalogueEntry& entry) {
    const CStr what = entry.name.empty() ? CStr("Sondrava") : "Add-on " + text(entry.name);
    return what + " " + text(entry.version);
}

CStr sizeText(int64_t bytes) {
    constexpr double kilo = 1024.0;
    const double size = double(bytes) / kilo;
    return size < kilo ? asStrFormat(std::ceil(size), "%0.0f KB")
                       : asStrFormat(size / kilo, "%0.1f MB");
}

/// Where things go that are fetched: in the user's folder.
CStr folderFor(const char* name) {
    const CStr user = getUserFolder();
    const CStr folder = user.empty() ? CStr() : addSep(user) + name;
    return !folder.empty() && createDir(folder) ? folder : CStr();
}

} // namespace

OnlineCheck::OnlineCheck(CMainWin* mainWin, OnlineSource from)
    : window(mainWin), source(std::move(from)) {
}

OnlineCheck::~OnlineCheck() = default;

template <class F>
OnlineResult OnlineCheck::inBackground(const char* caption, const CStr& status, F&& work) {
    CProgressWin progress(*window, caption);
    progress.onStatus(status);
    OnlineJob job(std::forward<F>(work));
    for (job.start(); !job.finished(); asSleep(pauseMs))
        if (!progress.onRender(job.done)) job.cancel();
    return job.result();
}

/// The version that the user has; empty for an add-on that is not there.
CStr OnlineCheck::presentVersion(const CatalogueEntry& entry) {
    return entry.name.empty() ? CStr(SONDRAVA_VERSION)
                              : iniReadString(addOnSection, text(entry.name), "");
}

bool OnlineCheck::isUpdate(const CatalogueEntry& entry) {
    const CStr present = presentVersion(entry);
    return !present.empty() && isNewer(entry.version, present.asChar());
}

bool OnlineCheck::isNews(const CatalogueEntry& entry) {
    return presentVersion(entry).empty() || isUpdate(entry);
}

void OnlineCheck::tell(OnlineResult result) const {
    const char* told = result == OnlineResult::unreachable
                           ? "The server cannot be reached, or has no such file."
                       : result == OnlineResult::stalled ? "The server has stopped sending."
                       : result == OnlineResult::damaged
                           ? "What the server sent is not what its owner has signed. Nothing was "
                             "changed."
                           : "There is no room in your folder for it.";
    if (result != OnlineResult::cancelled && result != OnlineResult::good)
        showMsg(window, title, told);
}

/// False when nothing more is to be asked.
bool OnlineCheck::offer(const CatalogueEntry& entry) {
    const bool program = entry.name.empty();
    const CStr what = nameOf(entry);
    const int answer =
        showMsg(window, title, what + " is there. Download it (" + sizeText(entry.bytes) + ")?",
                mbYes | mbNo | mbCancel);
    if (answer != mbYes) return answer == mbNo;
    const CStr folder = folderFor(program ? "updates" : "add-ons");
    if (folder.empty()) {
        tell(OnlineResult::notWritten);
        return false;
    }
    const std::string name = program ? "sondrava-" + entry.version : entry.name;
    const OnlineResult result = inBackground(title, what, [&](const OnlineWatch& watch) {
        return bringEntry(source, entry, folder.asChar(), name, watch);
    });
    tell(result);
    if (result != OnlineResult::good) return false;
    if (!program)
        CIniFile(inifile).writeString(addOnSection, text(entry.name), text(entry.version));
    showMsg(window, title, what + " is in " + addSep(folder) + text(name));
    return true;
}

void OnlineCheck::run() {
    worker.reset();
    const CStr scratch = folderFor("updates");
    Catalogue list;
    const OnlineResult result =
        scratch.empty()
            ? OnlineResult::notWritten
            : inBackground(title, "Asking the server...", [&](const OnlineWatch& watch) {
                  return getCatalogue(source, scratch.asChar(), list, watch);
              });
    if (result != OnlineResult::good) return tell(result);
    int news = 0;
    for (const CatalogueEntry& entry : list.entries) {
        if (!isNews(entry)) continue;
        news++;
        if (!offer(entry)) return;
    }
    if (news == 0) showMsg(window, title, "You have the latest version.");
}

// By itself.

void OnlineCheck::serve() {
    if (!asked && window->options().checkUpdates.on()) ask();
    if (!worker || !worker->finished()) return;
    const bool good = worker->result() == OnlineResult::good;
    worker.reset();
    if (good) tellNews();
}

/// A day that could not be asked is over as well: nobody waits for the answer.
void OnlineCheck::ask() {
    asked = true;
    const CStr scratch = folderFor("updates");
    if (!isThere() || scratch.empty() || iniReadInt(onlineSection, dayKey, 0) == today()) return;
    CIniFile(inifile).writeInteger(onlineSection, dayKey, today());
    worker = std::make_unique<OnlineJob>([this, scratch](const OnlineWatch& watch) {
        return getCatalogue(source, scratch.asChar(), coming, watch);
    });
    worker->start();
}

void OnlineCheck::tellNews() const {
    const auto news = std::ranges::find_if(coming.entries, isUpdate);
    if (news != coming.entries.end())
        setStatus(nameOf(*news) + " is there: Help, Check for updates...");
}
