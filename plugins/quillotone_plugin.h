/*
 * quillotone_plugin.h: the binary interface of decoder, encoder and DSP
 * effect libraries. Plain C; a plug-in needs nothing but this header.
 *
 * A library is a .dll (Windows) or .so (Linux) in the folder "decoder",
 * "encoder" or "DSPs" beside the program. It is a plug-in of a kind only if
 * it exports every function of that kind (names below, C linkage, the
 * platform's one x86-64 calling convention). Its display name is its file
 * name without folder and extension.
 *
 * Conventions
 * - Text is NUL-terminated UTF-16LE (qv_char). Text a plug-in returns stays
 *   the plug-in's and must stay valid until the next call on that instance.
 * - File names: on Windows pass the text to the wide file calls as it is.
 *   On POSIX turn it into bytes thus: a surrogate pair or any other unit as
 *   UTF-8, a lone U+DC80-U+DCFF as the single byte 0x80-0xFF (the program's
 *   form of a name that is not UTF-8), any other lone surrogate as U+FFFD.
 *   The program touches every file by the same rule, so a plug-in opens the
 *   very file the program reserved or found (examples/exampleio.h).
 * - Records are little-endian, packed to 4 bytes (a 64-bit field may sit at
 *   an offset that is not a multiple of 8); every offset is checked below.
 *   Callers zero-fill records before use; reserved fields stay zero.
 * - An instance is an opaque 64-bit value from Create; 0 means failure.
 * - Results of int32_t type: non-zero is success or "answered".
 * - Every instance is used by one thread at a time, and Create and Destroy
 *   of an instance come from the same thread. Destroy may come in any state,
 *   also right after Open or in the middle of a conversion (cancel).
 * - A failed call can be explained: Get / ENC_Get / DSP_Get with the key
 *   "LastError" answers in text1, in plain words for the user.
 * - Get / ENC_Get / DSP_Get with the key "AbiVersion" answers in `estimate`
 *   the QV_ABI_VERSION the library was built against.
 *
 * Audio on the wire
 * - Frames are interleaved, in the channel order of the WAVE channel mask.
 * - A link of the chain (decoder -> effect -> ... -> encoder) carries one
 *   qv_audio_format for the whole stream: either QV_SAMPLES_INT32 (signed
 *   32-bit, left-justified: full scale is +-2^31; `validBits` is the real
 *   depth and the bits below it are zero, so 8-, 16- and 24-bit sources
 *   pass bit-exact) or QV_SAMPLES_FLOAT32 (IEEE float, full scale +-1.0,
 *   values beyond it allowed). Decoders deliver their native kind.
 * - Effects and encoders say in `acceptedTypes` which kinds they take;
 *   the worker converts between the kinds where a link needs it (int to
 *   float exactly; float to int rounded and clipped, never dithered:
 *   dither is an effect's business). A stage that takes integers only on
 *   a float link sets `validBits` on return to the depth it wants the
 *   worker to round to (24 when it leaves a value outside 8..32).
 * - A block is qv_audio_block: at most 65536 frames, owned by whoever
 *   produced it, valid until that producer's next call on that instance.
 *
 * Order of calls for one file (ConvertWorker)
 *  1. Decoder: Create, Open (the open record: facts, tags, properties).
 *     Set "OutputTypes" (estimate: accepted QV_SAMPLES_* bits of the
 *     chain's first stage) lets a decoder choose its kind; then
 *     Get "Format" answers a qv_audio_format through `facts`.
 *  2. Each effect in chain order: DSP_Create, then DSP_BeginConversion
 *     with a qv_begin_record whose `format` holds the effect's input
 *     format. The effect may rewrite `*format` to its output format (a
 *     resampler the rate, a downmix the channels, "Bit Depth" the depth)
 *     and may replace the tag block (tags in and out, pictures included).
 *  3. Encoder: ENC_Create, ENC_BeginConversion with the last effect's
 *     output format, the final tags and the temporary output name.
 *  4. Two passes: an effect that answers DSP_Get "TwoPass" gets an
 *     analysis pass first: the file is decoded through the effects before
 *     it (normally) and its blocks go to DSP_PassNonLive, which produces
 *     nothing. Then the effects before it are ended, every effect is
 *     begun again (the analysed one then knows its measurement is
 *     complete), the decoder is rewound with SetPosition(0), and the live
 *     pass follows.
 *     Several such effects get one analysis pass each, in chain order.
 *  5. Live pass: DecodeBlock until it answers 0; each block goes through
 *     DSP_PassAudioBlock of every effect and then to ENC_EncodeBlock. An
 *     effect may answer 0 (holding audio back, nothing out this time).
 *  6. End of stream: each effect in order gets DSP_PassAudioBlock with
 *     `in` null until it answers 0, and its tail goes down the chain;
 *     then DSP_EndConversion. The encoder gets ENC_EndConversion with the
 *     final tags (an effect may add tags at its end, ReplayGain does) and
 *     finishes the file.
 *  7. DSP_AfterConversion for each effect, with the complete temporary
 *     output; an effect may still edit that file. Then the worker renames
 *     it into place. Destroy everything; Close the decoder.
 *  On cancel or failure the worker stops between calls, calls
 *  ENC_EndConversion with `aborted` set and Destroy on every instance, and
 *  deletes the temporary output itself.
 * Each call is expected to return within 100 ms, so that the worker can
 * answer a cancel within 200 ms.
 */
#ifndef QUILLOTONE_PLUGIN_H
#define QUILLOTONE_PLUGIN_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
typedef char16_t qv_char;
#define QV_STATIC_ASSERT(condition, message) static_assert(condition, message)
#else
typedef uint_least16_t qv_char;
#define QV_STATIC_ASSERT(condition, message) _Static_assert(condition, message)
#endif

#if defined(_WIN32)
#define QV_EXPORT __declspec(dllexport)
#else
#define QV_EXPORT __attribute__((visibility("default")))
#endif

QV_STATIC_ASSERT(sizeof(void*) == 8, "the plug-in interface is 64-bit only");
QV_STATIC_ASSERT(sizeof(qv_char) == 2, "text is UTF-16");

#define QV_ABI_VERSION 1u

#define QV_SAMPLES_INT32 1u
#define QV_SAMPLES_FLOAT32 2u

#define QV_BLOCK_LAST 1u
#define QV_OPEN_REQUEST 28u

#pragma pack(push, 4)

/* Given to Create, ENC_Create and DSP_Create; may end with the call, so a
 * plug-in copies what it needs. `file`: an open log file handle, or 0. */
typedef struct qv_log_record {
    uint64_t reserved[2];
    uint64_t file;
} qv_log_record;

/* Zero-filled before every Get, ENC_Get, DSP_Get and *_Set. Which fields a
 * key uses is documented with the key. */
typedef struct qv_query_record {
    uint32_t index; /* in: running number of enumerating keys */
    uint32_t reserved0;
    uint64_t lengthMs;    /* in: length of the source */
    uint64_t estimate;    /* out (Set: in): a number */
    const qv_char* text1; /* in: an option string; out: first text answer */
    const qv_char* text2; /* out: second text answer */
    uint64_t reserved1;
    const void* facts; /* in: a qv_stream_facts (Format: out, a qv_audio_format) */
} qv_query_record;

/* DSP_Get "BatchEndConversion": the same 56 bytes, used this way. */
typedef struct qv_batch_end_record {
    uint32_t reserved0;
    uint32_t blockSize; /* bytes of `block` */
    uint64_t batchId;   /* the batch's 31-bit number */
    uint64_t reserved1;
    const qv_char* settings;       /* the effect's settings */
    const qv_char* encoderOptions; /* the batch's encoder option string */
    const qv_char* encoderName;
    const void* block; /* tag block: file<N>_in, _out, _outtmp, _conversionhaderrors */
} qv_batch_end_record;

/* What a decoder found out about a stream, copied whole into the batch. */
typedef struct qv_stream_facts {
    uint16_t formatTag;
    uint16_t channels;
    uint32_t samplesPerSecond;
    uint32_t bytesPerSecond;
    uint16_t blockAlign;
    uint16_t bitsPerSample;
    uint8_t extensible[24]; /* rest of a WAVE_FORMAT_EXTENSIBLE description */
    uint32_t bitrate;       /* bits per second */
    uint64_t lengthMs;
    uint8_t carried[16];
} qv_stream_facts;

/* Open: zero-filled apart from the first two fields. The blocks stay the
 * decoder's, valid until its next call. */
typedef struct qv_open_record {
    const qv_char* fileName; /* in: full path */
    uint32_t request;        /* in: QV_OPEN_REQUEST */
    qv_stream_facts facts;   /* out */
    const void* tags;        /* out: tag block of the file's tags, or null */
    uint32_t tagsSize;
    const void* extra; /* out: tag block of the file's properties, or null */
    uint32_t extraSize;
    uint8_t reserved[24];
} qv_open_record;

/* The format of one link of the chain, for the whole stream. */
typedef struct qv_audio_format {
    uint32_t samplesPerSecond;
    uint16_t channels;
    uint16_t validBits;     /* 8..32 for QV_SAMPLES_INT32, 32 for float */
    uint32_t sampleType;    /* QV_SAMPLES_INT32 or QV_SAMPLES_FLOAT32 */
    uint32_t channelMask;   /* WAVE channel mask; 0: the default order */
    uint32_t acceptedTypes; /* begin calls, out: the kinds this stage takes */
    uint32_t reserved;
} qv_audio_format;

/* One block of frames in the link's format. */
typedef struct qv_audio_block {
    const void* samples; /* interleaved; owned by the producer */
    uint32_t frames;     /* at most 65536 */
    uint32_t flags;      /* QV_BLOCK_LAST on the last block of a stream */
    uint64_t position;   /* index in the stream of the first frame */
} qv_audio_block;

/* DSP_BeginConversion. The front end uses it for tag effects only, with
 * the three texts empty, `facts` all zero and `format` null. The worker
 * gives the source path, the output path and the temporary folder as the
 * texts, the source's facts and the link's format (in: input, out: the
 * effect's output, acceptedTypes filled in). `tags` and `tagsSize` are in
 * and out: an effect that changes the tags points them at a block of its
 * own, valid until its next call. */
typedef struct qv_begin_record {
    const qv_char* text1;
    const qv_char* text2;
    const qv_char* text3;
    const qv_stream_facts* facts;
    const void* tags;
    uint32_t tagsSize;
    qv_audio_format* format;
    uint32_t batchId; /* the worker's -batchid; 0 from the front end */
    uint8_t reserved[4];
} qv_begin_record;

/* ENC_BeginConversion. */
typedef struct qv_encoder_begin_record {
    const qv_char* outputPath;   /* the temporary name to write */
    const qv_char* optionString; /* the encoder's settings */
    const qv_char* sourcePath;
    const qv_stream_facts* facts; /* of the source */
    qv_audio_format* format;      /* in: the stream; out: acceptedTypes */
    const void* tags;             /* tag block, pictures as binary entries */
    uint32_t tagsSize;
    uint64_t totalFrames; /* expected frames; 0 when unknown */
    uint8_t reserved[16];
} qv_encoder_begin_record;

/* ENC_EndConversion. */
typedef struct qv_encoder_end_record {
    const void* tags; /* the final tag block, or null when unchanged */
    uint32_t tagsSize;
    uint32_t aborted; /* non-zero: stop, the worker deletes the output */
    uint8_t reserved[16];
} qv_encoder_end_record;

/* DSP_AfterConversion. */
typedef struct qv_after_record {
    const qv_char* outputPath; /* the complete temporary output */
    const qv_char* finalPath;  /* where it will be renamed to */
    const qv_char* settings;
    uint8_t reserved[16];
} qv_after_record;

#pragma pack(pop)

#define QV_CHECK_LAYOUT(type, field, offset) \
    QV_STATIC_ASSERT(offsetof(type, field) == (offset), #type "." #field " at " #offset)

QV_STATIC_ASSERT(sizeof(qv_log_record) == 24, "log record");
QV_STATIC_ASSERT(sizeof(qv_query_record) == 56, "query record");
QV_CHECK_LAYOUT(qv_query_record, lengthMs, 8);
QV_CHECK_LAYOUT(qv_query_record, estimate, 16);
QV_CHECK_LAYOUT(qv_query_record, text1, 24);
QV_CHECK_LAYOUT(qv_query_record, text2, 32);
QV_CHECK_LAYOUT(qv_query_record, facts, 48);
QV_STATIC_ASSERT(sizeof(qv_batch_end_record) == 56, "batch end record");
QV_CHECK_LAYOUT(qv_batch_end_record, blockSize, 4);
QV_CHECK_LAYOUT(qv_batch_end_record, batchId, 8);
QV_CHECK_LAYOUT(qv_batch_end_record, settings, 24);
QV_CHECK_LAYOUT(qv_batch_end_record, encoderOptions, 32);
QV_CHECK_LAYOUT(qv_batch_end_record, encoderName, 40);
QV_CHECK_LAYOUT(qv_batch_end_record, block, 48);
QV_STATIC_ASSERT(sizeof(qv_stream_facts) == 68, "stream facts");
QV_CHECK_LAYOUT(qv_stream_facts, samplesPerSecond, 4);
QV_CHECK_LAYOUT(qv_stream_facts, bytesPerSecond, 8);
QV_CHECK_LAYOUT(qv_stream_facts, blockAlign, 12);
QV_CHECK_LAYOUT(qv_stream_facts, bitsPerSample, 14);
QV_CHECK_LAYOUT(qv_stream_facts, extensible, 16);
QV_CHECK_LAYOUT(qv_stream_facts, bitrate, 40);
QV_CHECK_LAYOUT(qv_stream_facts, lengthMs, 44);
QV_CHECK_LAYOUT(qv_stream_facts, carried, 52);
QV_STATIC_ASSERT(sizeof(qv_open_record) == 128, "open record");
QV_CHECK_LAYOUT(qv_open_record, request, 8);
QV_CHECK_LAYOUT(qv_open_record, facts, 12);
QV_CHECK_LAYOUT(qv_open_record, tags, 80);
QV_CHECK_LAYOUT(qv_open_record, tagsSize, 88);
QV_CHECK_LAYOUT(qv_open_record, extra, 92);
QV_CHECK_LAYOUT(qv_open_record, extraSize, 100);
QV_CHECK_LAYOUT(qv_open_record, reserved, 104);
QV_STATIC_ASSERT(sizeof(qv_audio_format) == 24, "audio format");
QV_STATIC_ASSERT(sizeof(qv_audio_block) == 24, "audio block");
QV_CHECK_LAYOUT(qv_audio_block, position, 16);
QV_STATIC_ASSERT(sizeof(qv_begin_record) == 60, "begin record");
QV_CHECK_LAYOUT(qv_begin_record, facts, 24);
QV_CHECK_LAYOUT(qv_begin_record, tags, 32);
QV_CHECK_LAYOUT(qv_begin_record, tagsSize, 40);
QV_CHECK_LAYOUT(qv_begin_record, format, 44);
QV_CHECK_LAYOUT(qv_begin_record, batchId, 52);
QV_STATIC_ASSERT(sizeof(qv_encoder_begin_record) == 76, "encoder begin record");
QV_CHECK_LAYOUT(qv_encoder_begin_record, tagsSize, 48);
QV_CHECK_LAYOUT(qv_encoder_begin_record, totalFrames, 52);
QV_STATIC_ASSERT(sizeof(qv_encoder_end_record) == 32, "encoder end record");
QV_STATIC_ASSERT(sizeof(qv_after_record) == 40, "after record");

/* Exports, in binding order. Decoder: */
typedef uint64_t (*qv_Create)(const qv_log_record* log);
typedef void (*qv_Destroy)(uint64_t instance);
/* Keys: "Decodes" (index from 0: text1 an extension with its dot, text2
 * its description; 0 or null text1 ends the list), "Unlisted" (non-zero:
 * left out of file-type filters), "Format" (after Open: facts points at a
 * qv_audio_format to fill), "Notes" (after the end of stream: text1 what
 * the user should know of a file that still decoded, such as a damaged
 * end, lines separated by LF; answered 0 when there is nothing),
 * "LastError", "AbiVersion". */
typedef int32_t (*qv_Get)(uint64_t instance, const qv_char* key, qv_query_record* record);
/* Keys: "OutputTypes" (estimate: the QV_SAMPLES_* bits wanted). */
typedef int32_t (*qv_Set)(uint64_t instance, const qv_char* key, qv_query_record* record);
typedef int32_t (*qv_Open)(uint64_t instance, qv_open_record* record);
typedef void (*qv_Close)(uint64_t instance);
/* 1: `block` holds the next block; 0: end of stream; -1: failure. */
typedef int32_t (*qv_DecodeBlock)(uint64_t instance, qv_audio_block* block);
/* Moves to a frame index; non-zero on success. */
typedef int32_t (*qv_SetPosition)(uint64_t instance, uint64_t frame);
/* Leaves a tag out of what the instance reports from now on. */
typedef int32_t (*qv_DeleteATag)(uint64_t instance, const qv_char* name);

/* Encoder. ENC_Get keys: "Extension" (text1), "NoMultiCPU", "IsLossless",
 * "RequiresDSP" (text2: "Name=settings"), "DisableSameFolder",
 * "DisableConvertToFolder", "GetEstimatedFileSize" (lengthMs, text1,
 * facts in; estimate out), "OptionHelp" (text1: what the option string
 * takes, lines ending in LF, for people writing one by hand), "LastError",
 * "AbiVersion". */
typedef uint64_t (*qv_ENC_Create)(const qv_log_record* log);
typedef void (*qv_ENC_Destroy)(uint64_t instance);
typedef int32_t (*qv_ENC_Get)(uint64_t instance, const qv_char* key, qv_query_record* record);
typedef int32_t (*qv_ENC_Set)(uint64_t instance, const qv_char* key, qv_query_record* record);
/* The settings page: a child window of `parent` at x, y (units of 1/96
 * inch); returns its window handle, or null for no page. */
typedef void* (*qv_ENC_ShowConfigBit)(uint64_t instance, void* parent, int32_t x, int32_t y, const qv_char* options);
/* Closes the page and returns the option string it now stands for. */
typedef const qv_char* (*qv_ENC_RemoveConfigBit)(uint64_t instance, void* parent);
typedef int32_t (*qv_ENC_BeginConversion)(uint64_t instance, qv_encoder_begin_record* record);
typedef int32_t (*qv_ENC_EndConversion)(uint64_t instance, const qv_encoder_end_record* record);
typedef int32_t (*qv_ENC_EncodeBlock)(uint64_t instance, const qv_audio_block* block);

/* DSP effect. DSP_Get keys: "TwoPass" (answered: the effect wants an
 * analysis pass; `text1` holds the effect's settings, since whether it
 * needs one may depend on them), "Tags" (after DSP_EndConversion; answered: `facts`
 * points at the effect's final tag block, `estimate` is its size, valid
 * until the next call), "BatchEndConversion" (a qv_batch_end_record),
 * "OptionHelp" (as for encoders, of the settings), "LastError",
 * "AbiVersion". */
typedef uint64_t (*qv_DSP_Create)(const qv_log_record* log);
typedef void (*qv_DSP_Destroy)(uint64_t instance);
typedef int32_t (*qv_DSP_Get)(uint64_t instance, const qv_char* key, qv_query_record* record);
typedef int32_t (*qv_DSP_Set)(uint64_t instance, const qv_char* key, qv_query_record* record);
typedef void* (*qv_DSP_ShowConfigBit)(uint64_t instance, void* parent, int32_t x, int32_t y, const qv_char* settings);
typedef const qv_char* (*qv_DSP_RemoveConfigBit)(uint64_t instance, void* parent);
typedef int32_t (*qv_DSP_BeginConversion)(uint64_t instance, qv_begin_record* record, const qv_char* settings);
typedef int32_t (*qv_DSP_EndConversion)(uint64_t instance);
/* `in` null: the input has ended, hand out what is held back. 1: `out`
 * holds a block (the effect's); 0: nothing this time (at the end: drained);
 * -1: failure. */
typedef int32_t (*qv_DSP_PassAudioBlock)(uint64_t instance, const qv_audio_block* in, qv_audio_block* out);
/* The analysis pass of a two-pass effect: blocks in, nothing out. */
typedef int32_t (*qv_DSP_PassNonLive)(uint64_t instance, const qv_audio_block* in);
typedef int32_t (*qv_DSP_AfterConversion)(uint64_t instance, const qv_after_record* record);

#ifdef __cplusplus
}
#endif

#endif /* QUILLOTONE_PLUGIN_H */
