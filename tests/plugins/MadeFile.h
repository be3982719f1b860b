#pragma once

#include "support/Places.h"

#include <filesystem>
#include <fstream>
#include <string>

/// What says of the made LV2 plug-in what it is.
inline std::string madeBundleText(const std::string& name) {
    std::string text = R"(@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix atom: <http://lv2plug.in/ns/ext/atom#> .
@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix foaf: <http://xmlns.com/foaf/0.1/> .
@prefix midi: <http://lv2plug.in/ns/ext/midi#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix state: <http://lv2plug.in/ns/ext/state#> .
@prefix ui: <http://lv2plug.in/ns/extensions/ui#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
@prefix work: <http://lv2plug.in/ns/ext/worker#> .

<urn:made:NAME> a lv2:Plugin ; lv2:binary <NAME.so> ; doap:name "NAME" ;
    doap:maintainer [ foaf:name "Test makers" ] ;
    lv2:requiredFeature work:schedule ; lv2:extensionData state:interface, work:interface ;
    ui:ui <urn:made:ui:NAME> ;
    lv2:port
        [ a lv2:AudioPort, lv2:InputPort ; lv2:index 0 ; lv2:symbol "in1" ; lv2:name "In 1" ],
        [ a lv2:AudioPort, lv2:InputPort ; lv2:index 1 ; lv2:symbol "in2" ; lv2:name "In 2" ],
        [ a lv2:AudioPort, lv2:OutputPort ; lv2:index 2 ; lv2:symbol "out1" ; lv2:name "Out 1" ],
        [ a lv2:AudioPort, lv2:OutputPort ; lv2:index 3 ; lv2:symbol "out2" ; lv2:name "Out 2" ],
        [ a lv2:ControlPort, lv2:InputPort ; lv2:index 4 ; lv2:symbol "gain" ; lv2:name "GAIN" ;
          lv2:default 1.0 ; lv2:minimum 0.0 ; lv2:maximum 2.0 ;
          units:unit [ a units:Unit ; units:symbol "x" ] ],
        [ a lv2:ControlPort, lv2:InputPort ; lv2:index 5 ; lv2:symbol "latency" ;
          lv2:name "latency" ; lv2:default 0 ; lv2:minimum 0 ; lv2:maximum 4096 ],
        [ a lv2:ControlPort, lv2:InputPort ; lv2:index 6 ; lv2:symbol "trigger" ;
          lv2:name "trigger" ; lv2:default 0 ; lv2:minimum 0 ; lv2:maximum 1 ;
          lv2:portProperty lv2:enumeration ;
          lv2:scalePoint [ rdfs:label "Armed" ; rdf:value 1 ], [ rdfs:label "Safe" ; rdf:value 0 ] ],
        [ a lv2:ControlPort, lv2:OutputPort ; lv2:index 7 ; lv2:symbol "late" ; lv2:name "Late" ;
          lv2:designation lv2:latency ],
        [ a atom:AtomPort, lv2:InputPort ; lv2:index 8 ; lv2:symbol "notes" ; lv2:name "Notes" ;
          atom:bufferType atom:Sequence ; atom:supports midi:MidiEvent ],
        [ a atom:AtomPort, lv2:OutputPort ; lv2:index 9 ; lv2:symbol "answers" ;
          lv2:name "Answers" ; atom:bufferType atom:Sequence ; atom:supports midi:MidiEvent ] .

<urn:made:ui:NAME> a ui:X11UI ; ui:binary <NAME.so> .

<urn:made:preset:NAME> a pset:Preset ; lv2:appliesTo <urn:made:NAME> ; rdfs:label "Half" ;
    lv2:port [ lv2:symbol "gain" ; pset:value 0.5 ] .
)";
    text.insert(0, "@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .\n");
    if (name.starts_with("patched")) {
        text.insert(0, "@prefix patch: <http://lv2plug.in/ns/ext/patch#> .\n");
        text += R"(<urn:made:NAME> patch:writable <urn:made:depth>, <urn:made:file> .
<urn:made:depth> a lv2:Parameter ; rdfs:label "Depth" ; rdfs:range atom:Float ;
    lv2:default 0.0 ; lv2:minimum 0.0 ; lv2:maximum 2.0 .
<urn:made:file> a lv2:Parameter ; rdfs:label "File" ; rdfs:range atom:Path .
)";
        text.replace(text.find("atom:supports midi"), 13, "atom:supports patch:Message,");
    }
    const std::string mark = "NAME",
                      shown = name == "bad-long-texts" ? std::string(1024, 'x') : "gain";
    for (size_t at; (at = text.find("\"GAIN\"")) != std::string::npos;)
        text.replace(at, 6, '"' + shown + '"');
    for (size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += name.size())
        text.replace(at, mark.size(), name);
    return text;
}

/// A copy of the made plug-in in a folder, under a name that says how it behaves: of LV2 where it
/// ends in ".lv2", of CLAP where in ".clap" or ".vst3", else of VST 2. The path of it.
inline std::string madeFile(const std::string& folder, const std::string& name) {
    namespace fs = std::filesystem;
    const fs::path wanted = fs::path(folder) / name;
    const std::string format = wanted.extension().string(), stem = wanted.stem().string();
    if (format == ".lv2") {
        if (!fs::create_directory(wanted)) return wanted;
        fs::copy_file(builtFile("tests/made_lv2.so"), wanted / (stem + ".so"));
        std::ofstream(wanted / "manifest.ttl") << madeBundleText(stem);
        return wanted;
    }
    if (format == ".vst3") {
        const fs::path inside = wanted / "Contents" / "x86_64-linux";
        if (fs::create_directories(inside))
            fs::copy_file(builtFile("tests/made_vst3.so"), inside / (stem + ".so"));
        return wanted;
    }
    const bool clap = format == ".clap";
    const fs::path path = clap ? wanted : fs::path(folder) / (name + ".so");
    if (!fs::exists(path))
        fs::copy_file(builtFile(clap ? "tests/made_clap.so" : "tests/made_plugin.so"), path);
    return path;
}
