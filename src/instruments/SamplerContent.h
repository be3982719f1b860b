#pragma once

#include "base/CList.h"
#include "base/CStr.h"

#include <cstdint>
#include <memory>
#include <vector>

class CLayer;
class CQV;
class CSampleClip;
class CSampler;
class CSound;
class CStream;
class CSynthProg;

constexpr int sampleOptionBytes = 32;

/// The most that one file may hold, against files made of heads only.
constexpr int mostProgs = 1024, mostSounds = 32768;

/// What a stream of blocks holds, complete and linked nowhere. Owns it until it is taken.
///
/// A damaged block is refused and what it would have made is missing: a clip whose frames are not
/// all there, a sound whose clip is missing or whose type is unknown. Values are brought into the
/// range of their control. A sound without a program, as in a kit, opens one.
class SamplerContent {
public:
    ListOf<CSynthProg> progs;
    ListOf<CSampleClip> clips;
    int progIndex = 0;
    int mch = -1;
    unsigned char options[sampleOptionBytes] = {};
    CStr badBlock; ///< name of the first block that was refused, empty if all went well
    int badSize = 0;
    bool cutOff = false; ///< the blocks ended before the bytes did

    SamplerContent(CQV* root, CSampler* sampler) : host(root), owner(sampler) {}
    virtual ~SamplerContent();
    SamplerContent(const SamplerContent&) = delete;
    SamplerContent& operator=(const SamplerContent&) = delete;

    /// Reads blocks up to stream position `end`. A block of negative size, or one that does not
    /// fit, ends it.
    void read(CStream* stream, int64_t end);

protected:
    CQV* host;
    bool ended = false; ///< nothing more is to be read
    bool full = false;  ///< something had no room, which is no damage

    /// False when the block is damaged. Unknown ones are skipped.
    virtual bool readBlock(const CStr& name, CStream& body);
    /// A sound of a kind told by a file, or null when it can't be.
    virtual std::unique_ptr<CSound> newSound(int kind);
    /// Takes a sound that was read, owned from now on.
    virtual void keepSound(CSound* made);

private:
    CSampler* owner;
    CSynthProg* prog = nullptr; ///< being read
    CLayer* layer = nullptr;
    CSound* sound = nullptr;
    int soundCount = 0;
    std::vector<CSampleClip*> clipByIndex; ///< null for those refused

    void readHeadBlock(const CStr& name, CStream& body);
    bool hasRoom(const char* kind, int bytes);
    bool openProg();
    void openLayer();
    bool readClip(CStream& body);
    bool readSound(CStream& body);
    bool readClipRefs(CStream& body, CSound* into);
};
