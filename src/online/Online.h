#pragma once

#include "online/Catalogue.h"
#include "online/Fetch.h"

// What can be had from one address. All of it blocks: never on the audio or interface thread.

/// The files "catalogue" and "catalogue.sig" below an address, and whose signature they bear.
struct OnlineSource {
    std::string address; ///< with a slash at its end; empty: nothing is asked
    OnlineKey key{};
};

/// What a packager has filled in; an empty address else.
OnlineSource builtSource();

/// Gets the list, which nobody else can have made. `scratch` is a folder for a moment.
OnlineResult getCatalogue(const OnlineSource& source, const std::string& scratch, Catalogue& list,
                          const OnlineWatch& watch = {});

struct BringLimits {
    int64_t unpackedBytes = int64_t(2) << 30; ///< of all files together
    size_t files = 10000;
    int stallSeconds = 20;
};

/// Gets an entry, looks whether it is what the list tells, unpacks it and puts it in place of the
/// folder `name` in `folder`, in one step: what was there before stays until then, and whole if
/// anything fails. No file of it comes to lie elsewhere.
OnlineResult bringEntry(const OnlineSource& source, const CatalogueEntry& entry,
                        const std::string& folder, const std::string& name,
                        const OnlineWatch& watch = {}, const BringLimits& limits = {});
