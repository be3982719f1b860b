#pragma once

/* What an add-on for uploads is: a library "upload.so" in the folder "add-ons/upload" of the user,
 * with the one entry `sondravaUpload`. Plain C, so that any compiler makes one. All texts are
 * UTF-8 and end in 0; none is ever null. Calls come one at a time. `connect` and `sendFile` may
 * take long, and run on a thread of their own; all others answer at once. */

#ifdef __cplusplus
extern "C" {
#endif

enum { sondravaUploadVersion = 1 };

/* To be asked at least once a second during what takes long, with the part that is done, 0 to 1.
 * 0 is answered once the user has cancelled: the call shall end soon, without success. */
typedef int (*SondravaWatch)(void* follower, double done);

enum SondravaConnection {
    sondravaConnected = 0,
    sondravaNeedsCode = 1, /* the user gets one at the page "page", and it goes to `setCode` */
    sondravaRefused = 2
};

struct SondravaUpload {
    int version; /* sondravaUploadVersion */
    /* `folder` is there, and keeps what the add-on writes into it. Null: it cannot work. */
    void* (*open)(const char* folder);
    void (*close)(void* service);
    int (*connect)(void* service, SondravaWatch watch, void* follower); /* SondravaConnection */
    void (*disconnect)(void* service); /* forgets the user's account */
    void (*setCode)(void* service, const char* code);
    /* 1: the service has all of the file. */
    int (*sendFile)(void* service, const char* file, const char* name, SondravaWatch watch,
                    void* follower);
    /* "sharing": "public" or "private", before `sendFile`. Others are passed over. */
    void (*setParam)(void* service, const char* key, const char* value);
    /* The answer stays until the next call; empty for what is not known. "account": whose songs
     * they become, empty while nobody is connected. "page": where to get a code. "url": where the
     * latest song is. "error": why the last call failed, for the user. */
    const char* (*param)(void* service, const char* key);
};

/* Null for a version that it does not speak. The table stays as long as the library is loaded. */
const struct SondravaUpload* sondravaUpload(int version);

#ifdef __cplusplus
}
#endif
