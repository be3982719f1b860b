#include "project/ProjectWriter.h"

#include "base/CStream.h"
#include "base/OpenBlock.h"
#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "engine/CompBlocks.h"
#include "engine/StripBlocks.h"
#include "project/CableBlocks.h"
#include "project/KeyBlocks.h"
#include "project/MapBlocks.h"
#include "project/ProjectUi.h"
#include "project/SampleBlocks.h"

namespace {

constexpr int intBytes = 4, floatBytes = 4;

void writeFloatItem(CStream* stream, const char* id, float v) {
    stream->writeId(id, floatBytes);
    stream->writeFloat(v);
}

void writeEditor(CStream* stream, const char* id, const CEditorStruct& e) {
    stream->writeId(id, 8 * intBytes);
    for (const int v :
         {e.left, e.top, e.width, e.height, e.visible, e.maximized, e.page, e.pageItem})
        stream->writeInt(v);
}

void writeSettings(CStream* stream, CQV* host) {
    writeFloatItem(stream, "bpm", host->songTempo);
    writeIntBlock(stream, "loop", host->loop);
    stream->writeId("audiodir", host->audioFolder.length() + intBytes);
    stream->writeStr(host->audioFolder);
}

void writePages(CStream* stream, const WindowRecords& windows) {
    for (const auto& page : windows.pages) {
        stream->writeId("page", int(page.size()));
        stream->write(page.data(), int(page.size()));
    }
    writeIntBlock(stream, "pagei", windows.currentPage);
    writeIntBlock(stream, "pageModular", windows.modularPage);
}

void writeMixer(CStream* stream, CMixer* mixer) {
    mixer->saving();
    {
        const OpenBlock block(stream, "mixer");
        mixer->write(stream);
    }
    writeEditor(stream, "mixed", mixer->editorStruct);
}

void writeControllers(CStream* stream, CQV* host, const GraphIndex& index) {
    writeIntBlock(stream, "ccplay", host->ctrlStart);
    writeIntBlock(stream, "ccstop", host->ctrlStop);
    writeIntBlock(stream, "ccrew", host->ctrlRewind);
    writeIntBlock(stream, "ccrec", host->ctrlRecord);
    writeIntBlock(stream, "ccbpm", host->ctrlTempo);
    writeMaps(stream, host, index);
    writeIntBlock(stream, "cmi", host->curMap);
    writeEditor(stream, "cmed", host->mapStruct);
}

/// An output of a component that the mixer has a strip for.
void writeStripItems(CStream* stream, int listKind, COutputChannel* ch) {
    writeStrip(stream, ch);
    if (ch->soloSafe) writeIntBlock(stream, "soloSafe", 1);
    writeEq(stream, ch);
    writeEq2(stream, ch);
    if (listKind != listSends) writeSends(stream, ch, ch->comp->host->sends.getCount());
    for (auto* insert : ch->inserts) {
        writeComp(stream, listInsert, insert);
        writeFloatItem(stream, "wet", insert->wet);
    }
}

} // namespace

void writeOutputs(CStream* stream, int listKind, CComp* c) {
    const bool insert = listKind == listInsert;
    const CompIO io = fileIO(c);
    for (size_t i = 0; i < io.inPorts.size(); ++i) stream->writeId(insert ? "mini" : "min", 0);
    for (size_t i = 0; i < io.outPorts.size(); ++i) stream->writeId(insert ? "mouti" : "mout", 0);
    for (const auto* in : io.inputs) writeIntBlock(stream, insert ? "aini" : "ain", in->channels);
    for (auto* out : io.outputs) {
        writeIntBlock(stream, insert ? "aouti" : "aout", out->channels);
        if (listKind != listNone && !insert) writeStripItems(stream, listKind, out);
    }
    if (!insert && io.outputs.size() > 1) writeIntBlock(stream, "aoutCurCh", c->curOutput);
}

void writeComp(CStream* stream, int listKind, CComp* c) {
    const bool insert = listKind == listInsert;
    writeCompChunk(stream, c, listKind, insert ? "insert2" : "comp2");
    writeEditor(stream, insert ? "compedi" : "comped", c->editorStruct);
    if (!insert) writeIntBlock(stream, "hideChs", c->hideChs);
    writeOutputs(stream, listKind, c);
}

void writeProject(const Project& project, CStream* stream) {
    CQV* host = project.host;
    const WindowRecords& windows = project.ui->windows;
    stream->writeStr("QVF");
    writeSettings(stream, host);
    writeSamples2(stream, host);
    writeSamples(stream, host);
    writePages(stream, windows);
    writeComp(stream, listNone, host);
    for (auto* c : host->comps) writeComp(stream, listComps, c);
    for (auto* bus : host->sends) writeComp(stream, listSends, bus);
    writeMixer(stream, project.mixer);
    // The order of a sequencer's channels was settled as it was told that it is being saved.
    const GraphIndex index(host);
    writeCables(stream, host, index);
    writeKeys(stream, host, index);
    writeControllers(stream, host, index);
    writeSampleMarks(stream, host);
    stream->writeId("modsb", 2 * intBytes);
    for (const int v : windows.sidebar) stream->writeInt(v);
}
