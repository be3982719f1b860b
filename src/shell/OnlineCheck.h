#pragma once

#include "online/Online.h"

#include <memory>

class CMainWin;
class CStr;
class OnlineJob;

/// "Check for updates...": what there is at the packager's address that is newer, each asked for
/// before it is fetched. Where the user has chosen so, the list is got once a day by itself, and
/// the status line tells when something is newer. Interface thread.
class OnlineCheck {
public:
    explicit OnlineCheck(CMainWin* mainWin, OnlineSource from = builtSource());
    ~OnlineCheck(); ///< ends what is being asked
    OnlineCheck(const OnlineCheck&) = delete;
    OnlineCheck& operator=(const OnlineCheck&) = delete;

    bool isThere() const { return !source.address.empty(); } ///< a packager has named an address
    void run();
    void serve(); ///< in each tick: asks by itself, and tells of the answer
    bool isAsking() const { return worker != nullptr; } ///< by itself

private:
    template <class F>
    OnlineResult inBackground(const char* title, const CStr& status, F&& work);
    static CStr presentVersion(const CatalogueEntry& entry);
    static bool isUpdate(const CatalogueEntry& entry); ///< of what is there
    static bool isNews(const CatalogueEntry& entry);   ///< an update, or an add-on
    bool offer(const CatalogueEntry& entry);
    void tell(OnlineResult result) const;
    void ask();
    void tellNews() const;

    CMainWin* window;
    const OnlineSource source;
    bool asked = false; ///< by itself, in this run
    Catalogue coming;   ///< the worker's until it has finished
    std::unique_ptr<OnlineJob> worker;
};
