#pragma once

class COutputChannel;
class CStream;

// The items of a mixer strip in files. Each `write` makes the whole item, head included; each
// `read` takes its payload, which the stream has to end in time: a value that is missing, is not
// finite or lies outside the range of its control becomes the default or the nearest legal one.

/// "strip2": fader, pan, trim, switches and shown sections.
void writeStrip(CStream* stream, const COutputChannel* ch);
void readStrip(CStream* stream, COutputChannel* ch);
/// "strip", the form before it, that ends with the switches; no longer written.
void readOldStrip(CStream* stream, COutputChannel* ch);

/// "eq", and "eq2", which also has the state of each band, under the name `id`.
void writeEq(CStream* stream, const COutputChannel* ch, const char* id = "eq");
void writeEq2(CStream* stream, const COutputChannel* ch, const char* id = "eq2");
void readEq(CStream* stream, COutputChannel* ch);
void readEq2(CStream* stream, COutputChannel* ch);

/// "sends": a count, and the levels to the first buses of the host, at most `maxSends`.
void writeSends(CStream* stream, const COutputChannel* ch, int buses, const char* id = "sends");
/// Levels beyond `maxSends`, up to position `end`, are skipped.
void readSends(CStream* stream, COutputChannel* ch, int end);
