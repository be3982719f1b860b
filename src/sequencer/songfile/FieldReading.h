#pragma once

#include "base/CStream.h"
#include "base/Numbers.h"
#include "engine/CComp.h"

#include <cmath>

// Fields of a song's blocks, brought into range.

constexpr int mostPixels = 16384;

inline int readLimited(CStream& s, int low, int high) {
    return asMinMax(s.readInt(), low, high);
}
inline int readTicks(CStream& s) {
    return limitTicks(s.readInt());
}
/// What is no number gives `def`.
inline float readFloat(CStream& s, float low, float high, float def) {
    const float v = s.readFloat();
    return std::isfinite(v) ? fLimit(v, low, high) : def;
}
inline int readSwitch(CStream& s) {
    return s.readByte() != 0;
}
inline void skipInts(CStream& s, int count) {
    for (int i = 0; i < count; i++) s.readInt();
}

constexpr int editorBytes = 32;

/// The geometry of an editor window.
inline void writeEditorBlock(CStream* s, const char* name, const CEditorStruct& e) {
    s->writeId(name, editorBytes);
    for (int v : {e.left, e.top, e.width, e.height, e.visible, e.maximized, e.page, e.pageItem})
        s->writeInt(v);
}
inline void readEditorBlock(CStream& s, CEditorStruct& e) {
    constexpr int leastPixels = 64;
    e.left = readLimited(s, -mostPixels, mostPixels);
    e.top = readLimited(s, -mostPixels, mostPixels);
    e.width = readLimited(s, leastPixels, mostPixels);
    e.height = readLimited(s, leastPixels, mostPixels);
    e.visible = s.readInt();
    e.maximized = s.readInt();
    e.page = s.readInt();
    e.pageItem = s.readInt();
}
