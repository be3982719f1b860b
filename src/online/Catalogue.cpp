#include "online/Catalogue.h"

#include "interchange/ZipFile.h"

#include <charconv>
#include <fstream>
#include <sodium.h>
#include <sstream>

namespace {

constexpr const char *headWord = "sondrava-catalogue", *headVersion = "1";
constexpr int64_t mostBytes = int64_t(4) << 30;
constexpr size_t longestWord = 64, mostEntries = 1000;

bool isDigits(const std::string& text, size_t count) {
    return text.size() == count && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

/// A word that may become the name of a folder.
bool isPlainWord(const std::string& word) {
    return !word.empty() && word.size() <= longestWord && word.front() != '.' &&
           word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                  "0123456789.-_") == std::string::npos;
}

bool readNumber(const std::string& text, int64_t& value) {
    const char *from = text.data(), *to = from + text.size();
    const auto result = std::from_chars(from, to, value);
    return result.ec == std::errc() && result.ptr == to && value >= 0;
}

bool readEntry(std::istringstream& words, bool addOn, CatalogueEntry& entry) {
    std::string bytes, more;
    if (addOn && (!(words >> entry.name) || !isPlainWord(entry.name))) return false;
    if (!(words >> entry.version >> bytes >> entry.sha256 >> entry.path) || words >> more)
        return false;
    return isPlainWord(entry.version) && readNumber(bytes, entry.bytes) &&
           entry.bytes <= mostBytes && isDigits(entry.sha256, 64) && isPlainEntry(entry.path);
}

std::vector<int64_t> numbersOf(const std::string& version) {
    std::vector<int64_t> numbers;
    std::istringstream parts(version);
    for (std::string part; std::getline(parts, part, '.');) {
        int64_t number = 0;
        std::from_chars(part.data(), part.data() + part.size(), number);
        numbers.push_back(number);
    }
    while (!numbers.empty() && numbers.back() == 0) numbers.pop_back();
    return numbers;
}

} // namespace

bool isSigned(const std::string& text, const std::string& signature, const OnlineKey& key) {
    if (sodium_init() < 0 || signature.size() != crypto_sign_BYTES) return false;
    return crypto_sign_verify_detached(reinterpret_cast<const unsigned char*>(signature.data()),
                                       reinterpret_cast<const unsigned char*>(text.data()),
                                       text.size(), key.data()) == 0;
}

std::optional<Catalogue> readCatalogue(const std::string& text) {
    Catalogue list;
    std::istringstream lines(text);
    std::string line, word, version;
    if (!std::getline(lines, line)) return {};
    std::istringstream head(line);
    if (!(head >> word >> version) || word != headWord || version != headVersion) return {};
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        if (!(words >> word)) continue;
        if (word == "serial" && (!(words >> version) || !readNumber(version, list.serial)))
            return {};
        if (word != "program" && word != "addon") continue;
        CatalogueEntry entry;
        if (list.entries.size() >= mostEntries || !readEntry(words, word == "addon", entry))
            return {};
        list.entries.push_back(std::move(entry));
    }
    return list;
}

std::optional<OnlineKey> readKey(const std::string& digits) {
    OnlineKey key{};
    size_t length = 0;
    if (digits.size() != 2 * key.size() ||
        sodium_hex2bin(key.data(), key.size(), digits.data(), digits.size(), nullptr, &length,
                       nullptr) != 0 ||
        length != key.size())
        return {};
    return key;
}

std::string sha256OfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return "";
    crypto_hash_sha256_state state;
    crypto_hash_sha256_init(&state);
    std::vector<char> block(65536);
    while (file) {
        file.read(block.data(), std::streamsize(block.size()));
        crypto_hash_sha256_update(&state, reinterpret_cast<const unsigned char*>(block.data()),
                                  size_t(file.gcount()));
    }
    if (file.bad()) return "";
    unsigned char hash[crypto_hash_sha256_BYTES];
    crypto_hash_sha256_final(&state, hash);
    char digits[2 * sizeof hash + 1];
    return sodium_bin2hex(digits, sizeof digits, hash, sizeof hash);
}

bool isNewer(const std::string& version, const std::string& than) {
    return numbersOf(version) > numbersOf(than);
}
