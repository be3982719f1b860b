#include "instruments/SampleValues.h"

#include "base/Numbers.h"
#include "instruments/CSampleClip.h"

namespace {

using Numbers = StoredValue::Numbers;

int frameOf(const CSampleClip& clip, int mark) {
    return mark == sampleStart ? clip.start : mark == sampleEnd ? clip.end : clip.loopStart;
}

Numbers get(const CObject* o, int mark) {
    return {double(frameOf(*static_cast<const CSampleClip*>(o), mark))};
}

void set(CObject* o, int mark, const Numbers& to) {
    auto& clip = *static_cast<CSampleClip*>(o);
    const int frame = asRound(to[0]);
    if (mark == sampleStart) clip.setRange(asMin(frame, clip.end), clip.end);
    if (mark == sampleEnd) clip.setRange(clip.start, asMax(frame, clip.start));
    if (mark == sampleLoop) clip.setLoopStart(frame);
}

} // namespace

StoredValue sampleMark(CSampleClip* clip, int mark) {
    static constexpr StoredValue::Kind kinds[sampleMarks] = {
        {"Start", get, set}, {"Loop start", get, set}, {"End", get, set}};
    return {&kinds[mark], clip, mark};
}
