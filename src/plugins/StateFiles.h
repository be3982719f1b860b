#pragma once

#include "plugins/Plugin.h"
#include "plugins/PluginFile.h"

#include <optional>

// The state of CLAP and VST 3 plug-ins as files that other programs read and write too: presets of
// the format, with what the plug-in itself has written and nothing of ours. Any thread.

/// ".fxb", ".clap-preset", ".vstpreset"; empty for LV2, which has no such file.
const char* stateExtension(PluginFormat format);

/// The content of such a file. `chunk` is what a `Plugin` of that format told, `id` its name in its
/// library. Nothing for VST 2, LV2, and a plug-in that stores nothing itself.
Plugin::Bytes presetOf(PluginFormat format, const CStr& id, const Plugin::Bytes& chunk);
/// A chunk for `Plugin::setChunk` from a file; nothing for what is none, or of another plug-in.
std::optional<Plugin::Bytes> chunkOf(PluginFormat format, const CStr& id, const CStr& path);
