#include "engine/CFreezeItem.h"

#include "audiofiles/CSample.h"

CFreezeItem::~CFreezeItem() {
    delete sample;
}

void CFreezeItem::setSample(CSample* s) {
    sample = s;
    start = 0;
    end = s->getFrames() - 1;
}
