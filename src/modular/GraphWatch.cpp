#include "modular/GraphWatch.h"

#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/DeviceComps.h"
#include "engine/ObjectKinds.h"
#include "modular/GraphModel.h"
#include "ui/LevelText.h"

#include <algorithm>

COutputChannel* GraphWatch::soundOf(const CObject* item) {
    if (const CAudioCable* cable = asAudioCable(item)) return cable->fromChannel;
    if (const COutputChannel* strip = asStrip(item)) return const_cast<COutputChannel*>(strip);
    const CComp* comp = asComp(item);
    return comp ? comp->outputs.items(0) : nullptr;
}

void GraphWatch::listenTo(const CObject* item) {
    const COutputChannel* wanted = soundOf(item);
    if (!heard && !wanted) return;
    heard = wanted ? item : nullptr;
    if (auto* out = compAs<CAudioOut>(host->getAudioOut())) out->listened.storeRelease(wanted);
}

bool GraphWatch::isMetered(const CObject* item) const {
    return std::ranges::find(meters, item, &Meter::item) != meters.end();
}

void GraphWatch::toggleMeter(const CObject* item) {
    if (isMetered(item))
        std::erase_if(meters, [item](const Meter& m) { return m.item == item; });
    else if (soundOf(item))
        meters.push_back({item, 0.0f});
}

CStr GraphWatch::figureOf(const CObject* item) const {
    const auto found = std::ranges::find(meters, item, &Meter::item);
    return found == meters.end() ? CStr() : decibelText(found->highest);
}

bool GraphWatch::follow(size_t index) {
    Meter& meter = meters[index];
    const COutputChannel* ch = soundOf(meter.item);
    const CStr before = decibelText(meter.highest);
    if (ch) meter.highest = std::max({meter.highest, ch->peakL.load(), ch->peakR.load()});
    return decibelText(meter.highest) != before;
}

void GraphWatch::keepTo(const GraphModel& model) {
    if (heard && !model.has(heard)) listenTo(nullptr);
    std::erase_if(meters, [&model](const Meter& m) { return !model.has(m.item); });
}
