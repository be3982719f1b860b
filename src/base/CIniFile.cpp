#include "base/CIniFile.h"

#include "base/CStringList.h"
#include "base/Numbers.h"

#include <cstring>
#include <memory>

CStr inifile;

namespace {

CStr firstLine(const CStr& s) {
    const char* text = s.asChar();
    return CStr(text, std::strcspn(text, "\r\n"));
}

/// A settings file as it was read, with changes that are not written yet.
struct IniLines {
    explicit IniLines(const CStr& file) : path(file) { lines.open(path); }
    void save() const {
        if (changed) lines.save(path);
    }

    const CStr path;
    CStringList lines;
    bool changed = false;
};
std::unique_ptr<IniLines> gathered; ///< those of the batch, null without one

bool isGathered(const CStr& file) {
    return gathered && gathered->path == file;
}

/// The lines of a settings file, and where a section lies in them.
class IniText {
public:
    IniText(const CStr& file, const CStr& section)
        : own(isGathered(file) ? nullptr : std::make_unique<IniLines>(file)),
          text(own ? *own : *gathered) {
        locate(section);
    }

    CStringList& lines() const { return text.lines; }

    int head = -1; ///< line of the section's head, -1 when it is absent
    int end = 0;   ///< line behind the section

    int find(const CStr& key) const; ///< line of an entry, -1 when it is absent
    void add(const CStr& line);      ///< at the end of the section
    void save() const {
        text.changed = true;
        if (own) own->save();
    }

private:
    const std::unique_ptr<IniLines> own; ///< of a file that no batch has
    IniLines& text;

    void locate(const CStr& section);
};

void IniText::locate(const CStr& section) {
    for (const CStringItem* item : lines().list) {
        const CStr name = strToSection(item->text);
        if (!name.empty() && head >= 0) return;
        if (!name.empty() && sameText(name, section)) head = end;
        ++end;
    }
}

int IniText::find(const CStr& key) const {
    int at = 0;
    for (const CStringItem* item : lines().list) {
        if (at >= end) return -1;
        const CStr& line = item->text;
        if (head >= 0 && at > head && line.pos("=") >= 0 && sameText(strToIdent(line), key))
            return at;
        ++at;
    }
    return -1;
}

void IniText::add(const CStr& line) {
    int at = end;
    while (at > head + 1 && lines().get(at - 1).empty()) --at;
    lines().insert(at, line);
}

} // namespace

CStr CIniFile::readString(const CStr& section, const CStr& key, const CStr& def) {
    const IniText text(path, section);
    const int at = text.find(key);
    return at < 0 ? def : strToValue(text.lines().get(at));
}

int CIniFile::readInteger(const CStr& section, const CStr& key, int def) {
    return strAsIntDef(readString(section, key, ""), def);
}

void CIniFile::writeString(const CStr& section, const CStr& key, const CStr& value) {
    IniText text(path, firstLine(section));
    const CStr entry = firstLine(key) + "=" + firstLine(value);
    const int at = text.find(firstLine(key));
    if (at >= 0) {
        const CStr before = text.lines().get(at);
        const CStr line = stripValue(before) + "=" + firstLine(value);
        if (line == before) return;
        text.lines().setItem(at, line);
    } else if (text.head >= 0) {
        text.add(entry);
    } else {
        text.lines().append("");
        text.lines().append("[" + firstLine(section) + "]");
        text.lines().append(entry);
    }
    text.save();
}

void CIniFile::writeInteger(const CStr& section, const CStr& key, int value) {
    writeString(section, key, asStr(value));
}

void CIniFile::readSection(const CStr& section, CStringList* lines) {
    const IniText text(path, section);
    if (text.head < 0) return;
    int at = 0;
    for (const CStringItem* item : text.lines().list) {
        if (at > text.head && at < text.end && !item->text.empty()) lines->add(item->text);
        ++at;
    }
}

void CIniFile::eraseValue(const CStr& section, const CStr& key) {
    IniText text(path, section);
    const int at = text.find(key);
    if (at < 0) return;
    text.lines().del(at);
    text.save();
}

void CIniFile::eraseSection(const CStr& section) {
    IniText text(path, section);
    if (text.head < 0) return;
    for (int n = text.end - text.head; n > 0; --n) text.lines().del(text.head);
    text.save();
}

CIniBatch::CIniBatch(const CStr& file) : outermost(!gathered) {
    if (outermost) gathered = std::make_unique<IniLines>(file);
}

CIniBatch::~CIniBatch() {
    if (!outermost) return;
    gathered->save();
    gathered.reset();
}

CStr iniReadString(const CStr& section, const CStr& key, const CStr& def) {
    return CIniFile(inifile).readString(section, key, def);
}

int iniReadInt(const CStr& section, const CStr& key, int def) {
    return CIniFile(inifile).readInteger(section, key, def);
}

CStr strToSection(CStr& line) {
    line = line.trim();
    return strToSection(static_cast<const CStr&>(line));
}

CStr strToSection(const CStr& line) {
    const CStr text = line.trim();
    const int n = text.length();
    const bool isHead = n >= 3 && text[0] == '[' && text[n - 1] == ']';
    return isHead ? text.sub(1, n - 2) : CStr();
}

CStr strToIdent(const CStr& line) {
    const int at = line.pos("=");
    return at < 0 ? CStr() : line.sub(0, at).trim();
}

CStr strToValue(const CStr& line) {
    const int at = line.pos("=");
    return at < 0 ? CStr() : line.sub(at + 1, -1).trim();
}
