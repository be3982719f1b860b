#include "gui/UriList.h"

#include <unistd.h>

#include <cctype>

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const int lower = std::tolower(static_cast<unsigned char>(c));
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// A percent sign that no two digits follow stays as it is.
std::string decoded(std::string_view text) {
    std::string made;
    for (size_t i = 0; i < text.size(); i++) {
        const bool room = text[i] == '%' && i + 2 < text.size();
        const int high = room ? hexDigit(text[i + 1]) : -1, low = room ? hexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            made += text[i];
            continue;
        }
        made += char(high * 16 + low);
        i += 2;
    }
    return made;
}

bool isThisMachine(std::string_view host) {
    char name[256] = {};
    gethostname(name, sizeof name - 1);
    return host.empty() || host == "localhost" || host == name;
}

} // namespace

std::string pathOfUri(std::string_view uri) {
    constexpr std::string_view scheme = "file:", authority = "//";
    if (!uri.starts_with(scheme)) return "";
    uri.remove_prefix(scheme.size());
    if (uri.starts_with(authority)) {
        uri.remove_prefix(authority.size());
        const size_t slash = uri.find('/');
        if (slash == uri.npos || !isThisMachine(uri.substr(0, slash))) return "";
        uri.remove_prefix(slash);
    }
    std::string path = decoded(uri);
    const bool usable = path.starts_with('/') && path.find('\0') == path.npos;
    return usable ? path : "";
}

std::vector<CStr> pathsOfUriList(std::string_view list) {
    std::vector<CStr> paths;
    while (!list.empty()) {
        const size_t end = std::min(list.find_first_of("\r\n"), list.size());
        const std::string path = pathOfUri(list.substr(0, end));
        if (!path.empty()) paths.emplace_back(path.c_str(), path.size());
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return paths;
}
