#include "plugins/ParamRange.h"

#include <algorithm>
#include <cmath>

double ParamRange::value(float share) const {
    const double part = std::clamp(double(share), 0.0, 1.0);
    if (part == 1.0) return high;
    const double made = logarithmic ? low * std::pow(high / low, part) : low + part * (high - low);
    return whole ? std::round(made) : made;
}

float ParamRange::share(double value) const {
    const double least = std::min(low, high), most = std::max(low, high);
    if (!std::isfinite(value) || !(most > least)) return 0.0f;
    const double within = std::clamp(value, least, most);
    return float(logarithmic ? std::log(within / low) / std::log(high / low)
                             : (within - low) / (high - low));
}
