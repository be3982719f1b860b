#include "plugins/lv2/UridMap.h"

UridMap::UridMap() {
    map = {this, [](LV2_URID_Map_Handle of, const char* uri) {
               return static_cast<UridMap*>(of)->number(uri);
           }};
    unmap = {this, [](LV2_URID_Unmap_Handle of, LV2_URID number) {
                 return static_cast<UridMap*>(of)->uri(number);
             }};
}

LV2_URID UridMap::number(const char* uri) {
    if (!uri) return 0;
    const std::scoped_lock lock(guard);
    const auto [at, added] = numbers.try_emplace(uri, LV2_URID(numbers.size() + 1));
    if (added) uris.emplace_back(uri);
    return at->second;
}

const char* UridMap::uri(LV2_URID number) const {
    const std::scoped_lock lock(guard);
    return number > 0 && number <= uris.size() ? uris[number - 1].c_str() : nullptr;
}
