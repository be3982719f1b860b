#pragma once

#include "plugins/clap/ClapAbi.h"

class ClapPlugin;

/// What the host offers to a CLAP plug-in.
struct ClapOffers {
    static void fill(clapabi::Host& host, ClapPlugin* plugin);

private:
    static ClapPlugin& of(const clapabi::Host* host) {
        return *static_cast<ClapPlugin*>(host->data);
    }
    static const void* extension(const clapabi::Host* host, const char* id);
};
