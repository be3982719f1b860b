#pragma once

#include <cstdint>
#include <memory>

/// Of a fade, at any rate.
constexpr double fadeFramesPerMs = 44.1;

class CDrumSound;
class CElastiqueRender;
class CInputChannel;
class CObject;
class COutputChannel;
class CPart;
class CQV;
class CSample;
class CSongTrack;
class CTrack;
struct CAudioEvent;
struct CVoice;

/// How an audio event plays.
enum PlayMode : int {
    playRepitch = 0,  ///< at its own speed; the pitch shifts both
    playResample = 1, ///< as long as its ticks; the pitch follows the tempo
    playStretch = 2   ///< as long as its ticks, at its own pitch
};

/// What a voice starts with.
struct VoiceStart {
    CPart* part = nullptr;        ///< null for a freeze file
    CAudioEvent* event = nullptr; ///< null for freeze files and drums
    CSample* sample = nullptr;
    int start = 0, end = 0; ///< frames of the sample, first and last
    int mode = playRepitch;
    int reverse = 0;
    double pitch = 0.0;      ///< semitones
    int ticks = 0;           ///< on the timeline, in the modes that follow the tempo
    int tick = 0;            ///< of the song, where the event stands
    double into = 0.0;       ///< ticks that lie behind already
    double songPos = 0.0;    ///< tick of the song at which the voice begins
    int delay = 0;           ///< frames from the start of the block
    unsigned char group = 0; ///< choke group of a drum, 0 none
    CDrumSound* sound = nullptr;
    float velocity = 1.0f, pan = 0.0f, tune = 1.0f; ///< of a drum
    COutputChannel* out = nullptr;                  ///< that it is added to
};

/// A clip, drum or freeze file that plays.
struct AudioVoice {
    bool active = false;
    int mode = playRepitch;
    int delay = 0;           ///< frames before it starts, from the coming block on
    int tail = 0;            ///< frames left of the run-out; 0 while it plays
    double pos = 0.0;        ///< source frame, counted forward in a reversed one too
    double speed = 1.0;      ///< source frames per output frame
    double tempoSpeed = 0.0; ///< of that, for each beat per minute
    double pieceEnd = 0.0;   ///< `pos` up to which that holds, in a clip with markers
    double stretch = 1.0;    ///< output frames per source frame
    double pitch = 0.0;      ///< semitones
    double rate = 1.0;       ///< of the sample over that of the engine
    int start = 0, end = 0;  ///< source frames, first and last
    int stop = 0;            ///< source frame where it runs out: `end`, or before it when flushed
    bool flushed = false;
    int reverse = 0;
    int tick = 0, ticks = 0; ///< as it was started
    int stretchPos = 0;      ///< source frame that the stretcher takes next
    int stretchLeft = 0;     ///< output frames left through the stretcher
    std::uint64_t pins = 0;  ///< tells the event's markers from others
    int sliceLeft = 0;       ///< frames left of what is played at one gain
    float sliceGain = 1.0f;
    bool runsOut = false; ///< its tail comes behind the slice
    bool spent = false; ///< it has ended in this stride, so its slot stays free until the next one
    int fadeInLen = 0, fadeInPos = 0, fadeOutLen = 0; ///< frames
    int fadeOutPos = -1;                              ///< -1 until it begins
    float fadeInMs = 0.0f, fadeOutMs = 0.0f;          ///< of the event at the start
    int joining = 0;     ///< frames until it has taken the place of another voice
    int leaving = 0;     ///< frames until another one has taken its place; 0 while it stays
    bool orphan = false; ///< during a rebuild: no event has claimed it yet
    float lastLeft = 0.0f, lastRight = 0.0f; ///< the frame that runs out
    unsigned char group = 0;
    int choked = -1; ///< frames until another hit of its group ends it, from the coming block on
    CSample* sample = nullptr;
    CPart* part = nullptr;
    CAudioEvent* event = nullptr; ///< null once it was edited: what was read last stays
    CDrumSound* sound = nullptr;
    CElastiqueRender* stretcher = nullptr; ///< of the host, while it is in use
    COutputChannel* out = nullptr;
};

/// The voices of one song track: clips of audio tracks, drums, and the freeze files of any track.
/// Graph holder, but for making and deleting.
class AudioVoices {
public:
    static constexpr int count = 64;
    static constexpr int tailFrames = 4096;
    static constexpr int fadeStep = 32;    ///< frames at one gain
    static constexpr double crossMs = 5.0; ///< in which a voice takes the place of another one

    /// `drums`: with room for drum voices.
    AudioVoices(CSongTrack* owner, bool drums);
    ~AudioVoices();
    AudioVoices(const AudioVoices&) = delete;
    AudioVoices& operator=(const AudioVoices&) = delete;

    /// Before all else of a stride of the song.
    void beginStride();
    /// Has a voice start with the block that comes. Of a block's voices the first to be heard gets
    /// its slot first, so that the sum of all is made in one order.
    void ask(const VoiceStart& start);
    /// Starts what was asked for.
    void admit();
    /// Starts a voice; null when it cannot sound, or no slot is free.
    AudioVoice* add(const VoiceStart& start);
    // A rebuild of play pointers: between the two calls `join` is asked for every clip that is on
    // at the position. What it does not ask for goes within 5 ms. Drums are left alone, and with
    // `keepMain` the voices of parts whose main pointer stays, and freeze files.
    void beginRebuild(bool keepMain);
    void endRebuild();
    /// Has a clip sound from its middle on. A voice that plays just this goes on, with the pitch
    /// and end that the event has now; one that plays an earlier form of it is crossed over.
    void join(VoiceStart start);

    /// Adds `frames` of every voice to its channel, from frame `offset` on; drums to their strips.
    void render(int frames, int offset);
    /// Has the voices run out from a frame of the coming block on; those of drums only with
    /// `force`.
    void flush(int frame, bool force);
    /// Ends what plays `object`: a sample, part, drum sound or channel that is about to go.
    void drop(const CObject* object);
    void dropAll();
    /// The events of that part are not to be read any more.
    void forgetEvents(const CPart* part);
    bool sounding() const;

    AudioVoice voices[count];

private:
    CSongTrack* songTrack;
    VoiceStart asked[count]; ///< in the order of their delays
    int numAsked = 0;
    std::unique_ptr<CVoice[]> drums; ///< beside each slot, or null

    CQV* host() const;
    AudioVoice* findSlot(unsigned char group);
    AudioVoice* findHeld(unsigned char group);
    bool place(AudioVoice& v, const VoiceStart& start) const;
    double sourceFramesInto(const VoiceStart& start, double pitch) const;
    void begin(AudioVoice& v, const VoiceStart& start);
    void release(AudioVoice& v);
    void refresh(AudioVoice& v) const;
    void followPins(AudioVoice& v) const;
    double outputUpTo(const AudioVoice& v, double pos) const;
    void renderVoice(AudioVoice& v, int frames, int offset, int ahead);
    void beginSlice(AudioVoice& v, int most);
    int playSlice(AudioVoice& v, int left, int at);
    float fadeGain(AudioVoice& v, int& slice) const;
    void cutAtEnd(AudioVoice& v, int& slice) const;
    void fillScratch(AudioVoice& v, int slice);
    void crossScratch(AudioVoice& v, int slice);
    int crossFrames() const;
    void addScratch(AudioVoice& v, int slice, int at, float gain);
    int playTail(AudioVoice& v, int left, int at);
    void renderDrum(AudioVoice& v, int frames, int offset, int ahead);
};

// The strips of the drums of a track, around all that its voices add to them in a block: silence
// before, and after it their inserts, into the track and the send buses. Graph holder.
void clearDrumStrips(CTrack* track, int frames);
void finishDrumStrips(CTrack* track, int frames);
void feedDrums(CTrack* track, int bus, CInputChannel* to, int frames);
