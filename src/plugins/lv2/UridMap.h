#pragma once

#include <deque>
#include <lv2/urid/urid.h>
#include <mutex>
#include <string>
#include <unordered_map>

/// Numbers for URIs, as LV2 plug-ins ask for them; from 1 on, and kept as long as this lives. Any
/// thread, but it may wait.
class UridMap {
public:
    UridMap();
    UridMap(const UridMap&) = delete;
    UridMap& operator=(const UridMap&) = delete;

    LV2_URID number(const char* uri);
    const char* uri(LV2_URID number) const; ///< null for one that was not given

    LV2_URID_Map map{};
    LV2_URID_Unmap unmap{};

private:
    mutable std::mutex guard;
    std::unordered_map<std::string, LV2_URID> numbers;
    std::deque<std::string> uris; ///< whose texts stay where they are
};
