#include "engine/TransportRing.h"

void TransportRing::drain() {
    TransportCall call;
    while (ring.pop(call)) call.act(call.target, call.value, call.arg);
}
