"""Tells what an exchange file holds, a line each, by Python's own readers of zip and XML."""
import sys
import wave
import xml.etree.ElementTree as ET
import zipfile


def number(text):
    return "%.4f" % float(text)


def rows(element, where, out):
    for child in element:
        if child.tag == "Clip":
            assert child.get("contentTimeUnit") in ("beats", "seconds")
            head = [child.get(k) for k in ("time", "duration", "playStart")]
            line = "%s clip %s" % (where, " ".join(number(n) for n in head))
            if child.get("enable") == "false":
                line += " off"
            fades = [child.get("fadeInTime"), child.get("fadeOutTime")]
            if fades[0]:
                line += " fades " + " ".join(number(n) for n in fades)
            out.append(line)
            rows(child, where + ">", out)
        elif child.tag in ("Clips", "Lanes", "Notes"):
            rows(child, where, out)
        elif child.tag == "Note":
            head = [child.get(k) for k in ("time", "duration")]
            out.append("%s note %s %s %s %d" % (where, " ".join(number(n) for n in head),
                                                child.get("channel"), child.get("key"),
                                                round(float(child.get("vel")) * 127)))
        elif child.tag == "Points":
            target = child.find("Target")
            name = target.get("parameter") or " ".join(
                filter(None, (target.get(k) for k in ("expression", "channel", "controller", "key"))))
            points = ["%s=%s%s" % (number(p.get("time")), number(p.get("value")),
                                   "_" if p.get("interpolation") == "hold" else "/")
                      for p in child if p.tag == "RealPoint"]
            out.append("%s points %s %s" % (where, name, " ".join(points)))
        elif child.tag in ("Audio", "Warps"):
            audio = child if child.tag == "Audio" else child.find("Audio")
            warps = " ".join("%s:%s" % (number(w.get("time")), number(w.get("contentTime")))
                             for w in child.findall("Warp"))
            out.append("%s audio %s %s %s" % (where, audio.find("File").get("path"),
                                              audio.get("algorithm"), warps))


archive = zipfile.ZipFile(sys.argv[1])
assert archive.testzip() is None
root = ET.fromstring(archive.read("project.xml"))
assert root.tag == "Project" and root.get("version") == "1.0"
assert ET.fromstring(archive.read("metadata.xml")).tag == "MetaData"
lines = []
ids = [e.get("id") for e in root.iter() if e.get("id")]
assert len(ids) == len(set(ids)), "an id stands twice"
transport = root.find("Transport")
lines.append("tempo %s signature %s/%s" % (number(transport.find("Tempo").get("value")),
                                           transport.find("TimeSignature").get("numerator"),
                                           transport.find("TimeSignature").get("denominator")))
tracks = list(root.find("Structure").iter("Track"))
names = {t.find("Channel").get("id"): t.get("name") for t in tracks if t.find("Channel") is not None}
for track in tracks:
    channel = track.find("Channel")
    line = "%s %s %s" % (track.get("id"), track.get("contentType"), track.get("name"))
    if channel is not None:
        line += " %s volume %s pan %s mute %s" % (channel.get("role"),
                                                  number(channel.find("Volume").get("value")),
                                                  number(channel.find("Pan").get("value")),
                                                  channel.find("Mute").get("value"))
        if channel.get("destination"):
            line += " to %s" % names[channel.get("destination")]
        for send in channel.iter("Send"):
            line += " send %s" % number(send.find("Volume").get("value"))
        for band in channel.iter("Band"):
            assert [e.tag for e in band] == ["Freq", "Gain", "Q", "Enabled"]
            units = [e.get("unit") for e in band][:3]
            assert units == ["hertz", "decibel", "linear"]
            line += " band %s %d %.1f %s" % (
                band.get("type"), round(float(band.find("Freq").get("value"))),
                float(band.find("Gain").get("value")),
                "on" if band.find("Enabled").get("value") == "true" else "off")
        for device in channel.find("Devices") or []:
            state = device.find("State")
            content = b"" if state is None else archive.read(state.get("path"))
            assert state is None or content
            if device.tag.endswith("Plugin"):
                ending = state.get("path")[state.get("path").rindex("."):]
                lines.append("%s %s %s %s" % (device.tag, device.get("deviceName"), ending,
                                              content[:4].decode()))
    lines.append(line)
arrangement = root.find("Arrangement")
for lane in arrangement.find("Lanes"):
    assert lane.get("track") in ids
    rows(lane, lane.get("track"), lines)
for marker in arrangement.find("Markers"):
    lines.append("marker %s %s" % (number(marker.get("time")), marker.get("name")))
for point in arrangement.findall("TempoAutomation/RealPoint"):
    lines.append("tempo %s=%s %s" % (number(point.get("time")), number(point.get("value")),
                                     point.get("interpolation")))
for point in arrangement.findall("TimeSignatureAutomation/TimeSignaturePoint"):
    lines.append("signature %s %s/%s" % (number(point.get("time")), point.get("numerator"),
                                         point.get("denominator")))
for file in root.iter("File"):
    with archive.open(file.get("path")) as f, wave.open(f) as w:
        assert w.getnframes() > 0
print("\n".join(lines))
