#include "support/Places.h"

std::string builtFile(const std::string& path) {
    return SONDRAVA_BUILD "/" + path;
}

std::string sourceFile(const std::string& path) {
    return SONDRAVA_SOURCE "/" + path;
}
