#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The list of what can be had online: a text, and a signature of it beside it.
//
//     sondrava-catalogue 1
//     serial 12
//     program 2.1 7340032 <sha-256 in 64 digits> sondrava-2.1.zip
//     addon upload 1.0 20480 <sha-256> upload-1.0.zip
//
// Lines that begin with another word are passed over. Any thread.

using OnlineKey = std::array<unsigned char, 32>; ///< public, of Ed25519

struct CatalogueEntry {
    std::string name; ///< empty: the program itself
    std::string version;
    int64_t bytes = 0;
    std::string sha256; ///< in small digits
    std::string path;   ///< below the address, plain
};

struct Catalogue {
    int64_t serial = 0; ///< of two lists the higher one is the newer
    std::vector<CatalogueEntry> entries;
};

/// Whether a signature of 64 bytes is that of the text by the owner of the key.
bool isSigned(const std::string& text, const std::string& signature, const OnlineKey& key);
/// None for another text, and one with a damaged line.
std::optional<Catalogue> readCatalogue(const std::string& text);

/// A key in 64 digits; none for another text.
std::optional<OnlineKey> readKey(const std::string& digits);
/// The SHA-256 of a file in small digits, empty if it cannot be read.
std::string sha256OfFile(const std::string& path);
/// Whether a version goes behind another, number by number: "2.10" behind "2.9".
bool isNewer(const std::string& version, const std::string& than);
