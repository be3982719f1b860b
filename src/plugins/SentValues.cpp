#include "plugins/SentValues.h"

void SentValues::start(size_t count) {
    values.resize(count);
    unsent.assign(count, Shared<bool>(false));
    held.assign(count, false);
    anyUnsent = false;
}

void SentValues::set(size_t index, double value) {
    values[index] = value;
    unsent[index] = true;
    anyUnsent.storeRelease(true);
}

void SentValues::forgetWaiting() {
    for (Shared<bool>& one : unsent) one = false;
    anyUnsent = false;
}
