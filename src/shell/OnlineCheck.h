#pragma once

#include "online/Online.h"

class CMainWin;
class CStr;

/// "Check for updates...": what there is at the packager's address that is newer, each asked for
/// before it is fetched. Interface thread.
class OnlineCheck {
public:
    explicit OnlineCheck(CMainWin* mainWin, OnlineSource from = builtSource());

    bool isThere() const { return !source.address.empty(); } ///< a packager has named an address
    void run();

private:
    template <class F>
    OnlineResult inBackground(const char* title, const CStr& status, F&& work);
    bool isNews(const CatalogueEntry& entry) const;
    bool offer(const CatalogueEntry& entry);
    void tell(OnlineResult result) const;

    CMainWin* window;
    const OnlineSource source;
};
