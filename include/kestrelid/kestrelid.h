#pragma once

// The detector for programs in C and for other languages' bindings: C99, of libkestrelid-detection.
//
// Handles are opaque. A function that makes one gives it to the caller, which releases it once;
// releasing NULL does nothing. No function throws or ends the program, NULL for a handle included.
// Thread: any, for every function and every handle, but a handle must not be released while another
// call uses it.
//
// Functions that can fail return a KestrelidStatus. `error` may be NULL. Otherwise *error becomes
// NULL on success, and on failure an error to be freed, or NULL if there is no memory even for
// that. The handle that a failed call should have made is NULL.

#include <kestrelid/Export.h>
#include <kestrelid/Version.h>

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// The version of the library that was loaded, "0.1.0" for example. Static.
KESTRELID_EXPORT const char* kestrelid_library_version(void);

// ---- Errors

typedef enum KestrelidStatus {
    KESTRELID_OK = 0,
    KESTRELID_INVALID_ARGUMENT = 1,  // NULL for something needed, a size or value out of range
    KESTRELID_UNREADABLE = 2,        // a file or its bytes hold no picture that can be decoded
    KESTRELID_OUT_OF_MEMORY = 3,
    KESTRELID_FAILED = 4,  // the machine refuses something else, a thread for example
} KestrelidStatus;

typedef struct KestrelidError KestrelidError;

// KESTRELID_OK for NULL.
KESTRELID_EXPORT KestrelidStatus kestrelid_error_status(const KestrelidError* error);

// The cause in one line for a person, after the file's name if there is one; control characters, of
// the name too, are spaces. Ends in a zero byte; lives as long as the error. "" for NULL.
KESTRELID_EXPORT const char* kestrelid_error_text(const KestrelidError* error);

KESTRELID_EXPORT void kestrelid_error_free(KestrelidError* error);

// ---- Images

// A still picture in memory. It may be released while it is being judged.
typedef struct KestrelidImage KestrelidImage;

typedef enum KestrelidPixelFormat {
    KESTRELID_BGRA8 = 0,  // four bytes a pixel: blue, green, red, alpha (ignored)
    KESTRELID_RGB8 = 1,   // three bytes a pixel
    KESTRELID_GRAY8 = 2,  // one byte a pixel
    KESTRELID_BGR8 = 3,   // three bytes a pixel: blue, green, red
    KESTRELID_RGBA8 = 4,  // four bytes a pixel: red, green, blue, alpha (ignored)
} KestrelidPixelFormat;

// Rows from top to bottom.
typedef struct KestrelidPixels {
    size_t struct_size;  // sizeof(KestrelidPixels)
    const void* bytes;   // first byte of the first row
    size_t size;         // bytes that may be read; the last row needs no padding
    size_t stride;       // bytes from one row to the next
    int32_t width;       // pixels
    int32_t height;      // pixels
    int32_t format;      // KestrelidPixelFormat
} KestrelidPixels;

// Reads JPEG, PNG, WebP, TIFF or HEIC and turns it upright, on the calling thread. path: as the
// file system has it, ends in a zero byte. At most 64 MB, 100 million pixels, 20000 pixels a side.
KESTRELID_EXPORT KestrelidStatus kestrelid_image_read(const char* path, KestrelidImage** image,
                                                      KestrelidError** error);

// The same from size bytes of a file in memory, which are not needed after the return.
KESTRELID_EXPORT KestrelidStatus kestrelid_image_decode(const void* bytes, size_t size,
                                                        KestrelidImage** image,
                                                        KestrelidError** error);

// Copies the pixels; at most 100 million, 20000 a side.
KESTRELID_EXPORT KestrelidStatus kestrelid_image_from_pixels(const KestrelidPixels* pixels,
                                                             KestrelidImage** image,
                                                             KestrelidError** error);

// Pixels, as the picture is shown. 0 for NULL.
KESTRELID_EXPORT int32_t kestrelid_image_width(const KestrelidImage* image);
KESTRELID_EXPORT int32_t kestrelid_image_height(const KestrelidImage* image);

KESTRELID_EXPORT void kestrelid_image_release(KestrelidImage* image);

// ---- Results

// What the detector says of one picture. Never changes.
typedef struct KestrelidResult KestrelidResult;

// A copy to be released. NULL for NULL, and if there is not enough memory.
KESTRELID_EXPORT KestrelidResult* kestrelid_result_copy(const KestrelidResult* result);

// result: a copy, or what kestrelid_detector_validate_wait() gave.
KESTRELID_EXPORT void kestrelid_result_release(KestrelidResult* result);

// 1: a passport. 0: none, or result is NULL.
KESTRELID_EXPORT int kestrelid_result_is_passport(const KestrelidResult* result);

// 0.0 to 1.0. 0.0 for NULL.
KESTRELID_EXPORT double kestrelid_result_confidence(const KestrelidResult* result);

// Findings for a person: outline, keywords, machine-readable zone, in this order; or "Invalid
// image" alone. 0 for NULL.
KESTRELID_EXPORT size_t kestrelid_result_reason_count(const KestrelidResult* result);

// UTF-8, ends in a zero byte, lives as long as the result. size may be NULL; gets the bytes before
// the zero byte. NULL and 0 if result is NULL, or if index is not below the count.
KESTRELID_EXPORT const char* kestrelid_result_reason(const KestrelidResult* result, size_t index,
                                                     size_t* size);

// The lines read off the picture, joined with a line feed. Personal data: never log it. Form and
// life as for kestrelid_result_reason(); NULL and 0 for NULL.
KESTRELID_EXPORT const char* kestrelid_result_recognized_text(const KestrelidResult* result,
                                                              size_t* size);

// ---- Machine-readable zones

// The zones of one picture or of one text, the clearest first or as they stand. Never changes.
// Personal data: never log it. Its memory is wiped on release.
//
// Zones, lines, fields and problems are counted from 0. A text that is asked for is UTF-8, ends in
// a zero byte and lives as long as the zones. size may be NULL; gets the bytes before the zero
// byte. What does not exist is NULL and 0, also where zones is NULL.
typedef struct KestrelidZones KestrelidZones;

// The layout of a zone.
typedef enum KestrelidZoneFormat {
    KESTRELID_TD1 = 0,    // cards: three lines of 30
    KESTRELID_TD2 = 1,    // cards: two lines of 36
    KESTRELID_TD3 = 2,    // passports: two lines of 44
    KESTRELID_MRV_A = 3,  // visas: two lines of 44
    KESTRELID_MRV_B = 4,  // visas: two lines of 36
    KESTRELID_FRENCH_IDENTITY_CARD = 5,
    KESTRELID_DRIVING_LICENCE = 6,
} KestrelidZoneFormat;

// What a field says.
typedef enum KestrelidZoneFieldKind {
    KESTRELID_DOCUMENT_CODE = 0,
    KESTRELID_ISSUING_STATE = 1,
    KESTRELID_PRIMARY_IDENTIFIER = 2,    // the family name, as a rule
    KESTRELID_SECONDARY_IDENTIFIER = 3,  // the given names, as a rule
    KESTRELID_DOCUMENT_NUMBER = 4,
    KESTRELID_NATIONALITY = 5,
    KESTRELID_DATE_OF_BIRTH = 6,
    KESTRELID_SEX = 7,
    KESTRELID_DATE_OF_EXPIRY = 8,
    KESTRELID_OPTIONAL_DATA = 9,
    KESTRELID_FURTHER_OPTIONAL_DATA = 10,
    KESTRELID_ISSUING_OFFICE = 11,
    KESTRELID_COMPOSITE = 12,  // the digit over several fields; its text is empty
} KestrelidZoneFieldKind;

typedef enum KestrelidCheckDigit {
    KESTRELID_DIGIT_NOT_PRINTED = 0,  // the layout has none here, or a filler stands for it
    KESTRELID_DIGIT_PASSED = 1,
    KESTRELID_DIGIT_FAILED = 2,
} KestrelidCheckDigit;

// Why a zone is not to be trusted.
typedef enum KestrelidZoneProblem {
    KESTRELID_TOO_SMALL = 0,  // found but not read: too few pixels a character
    KESTRELID_BLURRED = 1,    // found but not read: out of focus, moved, or covered
    KESTRELID_LINE_MISSING = 2,
    KESTRELID_WRONG_LENGTH = 3,
    KESTRELID_NOT_ALLOWED = 4,  // a character stands where the layout has none such
    KESTRELID_CHECK_DIGIT_FAILED = 5,
    KESTRELID_IMPOSSIBLE_DATE = 6,
    KESTRELID_UNCLEAR = 7,  // read in doubt where no check digit covers it
} KestrelidZoneProblem;

// A day of the Gregorian calendar: year 1 to 9999, month 1 to 12.
typedef struct KestrelidDay {
    int32_t year;
    int32_t month;
    int32_t day;
} KestrelidDay;

// Shares of the picture's width and height from its top left corner: 0 to 1.
typedef struct KestrelidPoint {
    double x;
    double y;
} KestrelidPoint;

// Filled by kestrelid_zones_zone(). Later versions append fields only: a library that is older than
// its caller sets those that it does not know to zero.
typedef struct KestrelidZone {
    size_t struct_size;  // sizeof(KestrelidZone), by the caller
    size_t lines;        // how many it has, also below
    size_t fields;
    size_t problems;
    int32_t format;  // KestrelidZoneFormat

    // 1: complete, its grammar holds, all printed check digits pass, and every character that no
    // digit covers was read clearly. Says nothing of whether the document is genuine. 0: problems
    // tell why not.
    int32_t is_strict;

    double pixels_per_character;  // of the picture; 0: unknown

    // Around the zone, as it is read: top left, top right, bottom right, bottom left. All zero for
    // a zone of a text.
    KestrelidPoint corners[4];
} KestrelidZone;

// Filled by kestrelid_zones_field(); grows as KestrelidZone does.
typedef struct KestrelidZoneField {
    size_t struct_size;   // sizeof(KestrelidZoneField), by the caller
    size_t corrections;   // characters that were taken for others than those read best
    size_t doubtful;      // characters that might be others, though nothing speaks against them
    int32_t kind;         // KestrelidZoneFieldKind
    int32_t check_digit;  // KestrelidCheckDigit

    // Of dates; -1: no date, unknown, or for the whole year not to be told.
    int32_t year;            // with its century
    int32_t two_digit_year;  // 0 to 99
    int32_t month;           // 1 to 12
    int32_t day;             // 1 to 31

    int32_t is_known_state;        // 1: the code is known; 0: it is not; -1: no state
    int32_t is_perhaps_truncated;  // 1: the names fill their field, so that some may be left out
} KestrelidZoneField;

// The zones in text, size bytes of any kind, one line of a zone a line of text; none is no failure.
// as_of: the day on which the document is looked at, which tells the centuries of its years; NULL:
// years keep two digits.
KESTRELID_EXPORT KestrelidStatus kestrelid_zones_parse(const char* text, size_t size,
                                                       const KestrelidDay* as_of,
                                                       KestrelidZones** zones,
                                                       KestrelidError** error);

KESTRELID_EXPORT void kestrelid_zones_release(KestrelidZones* zones);

// 0 for NULL.
KESTRELID_EXPORT size_t kestrelid_zones_count(const KestrelidZones* zones);

// 1: filled. 0: there is no such zone, or no room for the fields of the first version.
KESTRELID_EXPORT int kestrelid_zones_zone(const KestrelidZones* zones, size_t zone,
                                          KestrelidZone* filled);

// As printed, after corrections.
KESTRELID_EXPORT const char* kestrelid_zones_line(const KestrelidZones* zones, size_t zone,
                                                  size_t line, size_t* size);

// As kestrelid_zones_zone(). Fields come in the order in which they are printed.
KESTRELID_EXPORT int kestrelid_zones_field(const KestrelidZones* zones, size_t zone, size_t field,
                                           KestrelidZoneField* filled);

// For people: without fillers at the end, a blank for a single one between letters.
KESTRELID_EXPORT const char* kestrelid_zones_field_text(const KestrelidZones* zones, size_t zone,
                                                        size_t field, size_t* size);

// As printed, after corrections, fillers included.
KESTRELID_EXPORT const char* kestrelid_zones_field_characters(const KestrelidZones* zones,
                                                              size_t zone, size_t field,
                                                              size_t* size);

// The state's name in English; "" for a code that is not known. NULL and 0 for other fields.
KESTRELID_EXPORT const char* kestrelid_zones_field_state(const KestrelidZones* zones, size_t zone,
                                                         size_t field, size_t* size);

// One line for a person, which holds nothing that the zone says. kind: may be NULL; gets the
// KestrelidZoneProblem, or -1.
KESTRELID_EXPORT const char* kestrelid_zones_problem(const KestrelidZones* zones, size_t zone,
                                                     size_t problem, int32_t* kind, size_t* size);

// "TD3", "MRV-A" and so on. Static; "unknown" for other numbers.
KESTRELID_EXPORT const char* kestrelid_zone_format_name(int32_t format);

// "documentNumber" and so on, for programs: the words of kestrelid's JSON. Static; "unknown" for
// other numbers.
KESTRELID_EXPORT const char* kestrelid_zone_field_key(int32_t kind);

// "none", "passed" or "failed"; as above.
KESTRELID_EXPORT const char* kestrelid_check_digit_key(int32_t check_digit);

// "checkDigitFailed" and so on; as above.
KESTRELID_EXPORT const char* kestrelid_zone_problem_key(int32_t kind);

// ---- Detectors

// Decides whether pictures show a passport. Immutable: overlapping calls are independent.
typedef struct KestrelidDetector KestrelidDetector;

// The verdict and the confidence are the same for both.
typedef enum KestrelidEffort {
    KESTRELID_COMPLETE = 0,      // reads the whole text
    KESTRELID_VERDICT_ONLY = 1,  // stops reading once the keywords are decided; reasons and text
                                 // may be shorter
} KestrelidEffort;

// Zero in a field means the default. Later versions append fields only: a library that is newer
// than its caller uses their defaults, an older one refuses those that are not zero.
typedef struct KestrelidDetectorOptions {
    size_t struct_size;  // sizeof(KestrelidDetectorOptions)

    // Folder of the models (*.onnx) and the ONNX Runtime library. NULL: beside the library,
    // installed or built.
    const char* resources;

    int32_t effort;        // KestrelidEffort
    int32_t text_threads;  // that one picture's text may use, 1 to 64; 0: two

    // Takes models, threads and console from another detector, which may be released before this
    // one; all above but effort, and console too, must then be zero. Detectors whose resources and
    // text_threads are equal share models and threads anyway, about 300 MB.
    const struct KestrelidDetector* share;

    // Gets a line, size bytes and a zero byte, if recognition fails. It says what is missing on the
    // machine. On any thread, several at once. NULL: standard output. Not called once the detectors
    // are released and all their calls are disposed of.
    void (*console)(void* console_user, const char* line, size_t size);
    void* console_user;
} KestrelidDetectorOptions;

// options: NULL for the defaults. Loads no model yet: the first picture does, and a missing one is
// reported on the console; it makes the verdict poorer, but the call does not fail.
KESTRELID_EXPORT KestrelidStatus kestrelid_detector_create(const KestrelidDetectorOptions* options,
                                                           KestrelidDetector** detector,
                                                           KestrelidError** error);

// Waits for nothing. Gives up the calls whose outline is not found yet; those whose text is being
// read still answer, on their thread. A program may end at any moment: nothing is answered any more
// once it does. Allowed inside a completion.
KESTRELID_EXPORT void kestrelid_detector_release(KestrelidDetector* detector);

// result: for the time of the call; kestrelid_result_copy() keeps it. Must not throw or jump out.
typedef void (*KestrelidCompletion)(void* user, const KestrelidResult* result);

// Judges the image and returns at once. image: NULL is judged as "Invalid image". completion: may
// be NULL; called at most once, with user: before the return if image is NULL, otherwise on a
// worker thread, even before the return. It is never called if the call fails or is abandoned.
// dispose: may be NULL; called exactly once, with user, whatever this call returns: after the
// completion or in its place, on any thread, the calling one included.
KESTRELID_EXPORT KestrelidStatus kestrelid_detector_validate(
    KestrelidDetector* detector, const KestrelidImage* image, KestrelidCompletion completion,
    void* user, void (*dispose)(void* user), KestrelidError** error);

// The same, but waits for the verdict, which the caller releases; KESTRELID_FAILED if none comes
// within ten minutes. Never call it inside a completion: it would wait for its own thread.
KESTRELID_EXPORT KestrelidStatus kestrelid_detector_validate_wait(KestrelidDetector* detector,
                                                                  const KestrelidImage* image,
                                                                  KestrelidResult** result,
                                                                  KestrelidError** error);

// The same verdict, and the machine-readable zones of the picture, both released by the caller.
// as_of: as for kestrelid_zones_parse(). A zone reader that fails is a line on the console and no
// zone.
KESTRELID_EXPORT KestrelidStatus kestrelid_detector_examine_wait(
    KestrelidDetector* detector, const KestrelidImage* image, const KestrelidDay* as_of,
    KestrelidResult** result, KestrelidZones** zones, KestrelidError** error);

// What the verdict of kestrelid_detector_examine_wait() was reached by; other results have neither.
// 1: corners, four, are filled with the outline that the text was read in, as in KestrelidZone.
// 0: there is none.
KESTRELID_EXPORT int kestrelid_result_outline(const KestrelidResult* result,
                                              KestrelidPoint* corners);

// Entries of the detector's table that the text holds, as they are counted. 0 for NULL.
KESTRELID_EXPORT size_t kestrelid_result_match_count(const KestrelidResult* result);

// As it stands in the table. Form and life as for kestrelid_result_reason(). distance: may be NULL;
// gets the edits between the entry and the text.
KESTRELID_EXPORT const char* kestrelid_result_match(const KestrelidResult* result, size_t index,
                                                    int32_t* distance, size_t* size);

#ifdef __cplusplus
}  // extern "C"
#endif
