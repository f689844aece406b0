// What each function promises for arguments of every kind, without recognition.

#include "tests/c/Check.h"

#include <kestrelid/kestrelid.h>

static void count(void* counter) {
    ++*(int*)counter;
}

// Takes the error's text away, so that the next call can be checked.
static void expectError(KestrelidStatus status, KestrelidStatus expected, KestrelidError** error,
                        const char* text) {
    CHECK(status == expected);
    CHECK(kestrelid_error_status(*error) == expected);
    CHECK_TEXT(kestrelid_error_text(*error), text);
    kestrelid_error_free(*error);
    *error = NULL;
}

#define INVALID(call, text) expectError(call, KESTRELID_INVALID_ARGUMENT, &error, text)

static void nullHandles(void) {
    size_t size = 7;
    kestrelid_error_free(NULL);
    kestrelid_image_release(NULL);
    kestrelid_result_release(NULL);
    kestrelid_detector_release(NULL);
    CHECK(kestrelid_error_status(NULL) == KESTRELID_OK);
    CHECK_TEXT(kestrelid_error_text(NULL), "");
    CHECK(kestrelid_image_width(NULL) == 0 && kestrelid_image_height(NULL) == 0);
    CHECK(kestrelid_result_copy(NULL) == NULL);
    CHECK(kestrelid_result_is_passport(NULL) == 0);
    CHECK(kestrelid_result_confidence(NULL) <= 0.0);
    CHECK(kestrelid_result_reason_count(NULL) == 0);
    CHECK(kestrelid_result_reason(NULL, 0, &size) == NULL && size == 0);
    CHECK(kestrelid_result_recognized_text(NULL, NULL) == NULL);
    kestrelid_zones_release(NULL);
    CHECK(kestrelid_zones_count(NULL) == 0);
}

static void nullArguments(void) {
    KestrelidImage* image = (KestrelidImage*)&image;
    KestrelidResult* result = (KestrelidResult*)&result;
    KestrelidError* error = NULL;
    int disposed = 0;
    INVALID(kestrelid_image_read(NULL, &image, &error), "path is NULL");
    CHECK(image == NULL);
    INVALID(kestrelid_image_decode(NULL, 5, &image, &error), "bytes is NULL");
    INVALID(kestrelid_image_decode("", 0, NULL, &error), "image is NULL");
    INVALID(kestrelid_image_from_pixels(NULL, &image, &error), "pixels is NULL");
    INVALID(kestrelid_detector_create(NULL, NULL, &error), "detector is NULL");
    INVALID(kestrelid_detector_validate_wait(NULL, NULL, &result, &error), "detector is NULL");
    CHECK(result == NULL);
    INVALID(kestrelid_detector_validate(NULL, NULL, NULL, &disposed, count, &error),
            "detector is NULL");
    CHECK(disposed == 1);
    KestrelidZones* zones = (KestrelidZones*)&zones;
    INVALID(kestrelid_zones_parse(NULL, 5, NULL, &zones, &error), "text is NULL");
    CHECK(zones == NULL);
    zones = (KestrelidZones*)&zones;
    INVALID(kestrelid_detector_examine_wait(NULL, NULL, NULL, &result, NULL, &error),
            "zones is NULL");
    INVALID(kestrelid_detector_examine_wait(NULL, NULL, NULL, &result, &zones, &error),
            "detector is NULL");
    CHECK(zones == NULL);
    int32_t distance = 7;
    CHECK(kestrelid_result_outline(NULL, NULL) == 0 && kestrelid_result_match_count(NULL) == 0);
    CHECK(kestrelid_result_match(NULL, 0, &distance, NULL) == NULL && distance == 0);
    CHECK(kestrelid_image_read(NULL, NULL, NULL) == KESTRELID_INVALID_ARGUMENT);
    CHECK(kestrelid_image_decode("png", 3, &image, NULL) == KESTRELID_UNREADABLE);
    expectError(kestrelid_image_read("gone.png", &image, &error), KESTRELID_UNREADABLE, &error,
                "gone.png: cannot be opened: No such file or directory");
    CHECK(image == NULL);
}

static void rawPixels(void) {
    unsigned char* bytes = calloc(7, 1);  // two rows of three, the second without padding
    KestrelidPixels good = {.struct_size = sizeof(KestrelidPixels),
                            .bytes = bytes,
                            .size = 7,
                            .stride = 4,
                            .width = 3,
                            .height = 2,
                            .format = KESTRELID_GRAY8};
    KestrelidPixels bad;
    KestrelidImage* image = NULL;
    KestrelidError* error = NULL;

    CHECK(kestrelid_image_from_pixels(&good, &image, &error) == KESTRELID_OK);
    CHECK(error == NULL);
    free(bytes);  // copied
    CHECK(kestrelid_image_width(image) == 3 && kestrelid_image_height(image) == 2);
    kestrelid_image_release(image);

#define REFUSED(field, value, text)                                                                \
    bad = good;                                                                                    \
    bad.field = value;                                                                             \
    INVALID(kestrelid_image_from_pixels(&bad, &image, &error), text);                              \
    CHECK(image == NULL)
    REFUSED(struct_size, 0, "struct_size is not set");
    REFUSED(bytes, NULL, "bytes is NULL");
    REFUSED(format, -1, "format is none of KestrelidPixelFormat");
    REFUSED(width, 20001, "width or height is out of range");
    REFUSED(format, KESTRELID_BGRA8, "stride is shorter than a row");
    REFUSED(size, 6, "size does not hold all rows");
    REFUSED(stride, (size_t)-1, "size does not hold all rows");
#undef REFUSED
}

static void options(void) {
    struct {
        KestrelidDetectorOptions known;
        int64_t later;
    } newer;
    KestrelidDetectorOptions given;
    KestrelidDetector* detector = NULL;
    KestrelidDetector* other = NULL;
    KestrelidError* error = NULL;

    memset(&newer, 0, sizeof(newer));
    newer.known.struct_size = sizeof(newer);
    CHECK(kestrelid_detector_create(&newer.known, &detector, NULL) == KESTRELID_OK);
    newer.later = 1;
    INVALID(kestrelid_detector_create(&newer.known, &other, &error),
            "a field is set that this version of the library does not know");
    CHECK(other == NULL);

#define REFUSED(field, value, text)                                                                \
    memset(&given, 0, sizeof(given));                                                              \
    given.struct_size = sizeof(given);                                                             \
    given.share = detector;                                                                        \
    given.field = value;                                                                           \
    INVALID(kestrelid_detector_create(&given, &other, &error), text)
    REFUSED(struct_size, sizeof(size_t), "struct_size is not set");
    REFUSED(effort, 2, "effort is out of range: 0 to 1");
    REFUSED(text_threads, 65, "text_threads is out of range: 0 to 64");
    REFUSED(resources, "/", "a detector that shares takes these options from the other one");
#undef REFUSED

    // The one that shares goes on without the one it shares with.
    memset(&given, 0, sizeof(given));
    given.struct_size = sizeof(given);
    given.share = detector;
    given.effort = KESTRELID_VERDICT_ONLY;
    CHECK(kestrelid_detector_create(&given, &other, &error) == KESTRELID_OK);
    kestrelid_detector_release(detector);
    CHECK(kestrelid_detector_validate(other, NULL, NULL, NULL, NULL, &error) == KESTRELID_OK);
    kestrelid_detector_release(other);
}

struct Kept {
    int disposed;
    KestrelidResult* result;
};

static void keep(void* user, const KestrelidResult* result) {
    struct Kept* kept = user;
    CHECK(kept->result == NULL && kept->disposed == 0);
    kept->result = kestrelid_result_copy(result);
}

static void dispose(void* user) {
    ++((struct Kept*)user)->disposed;
}

static void withoutImage(void) {
    struct Kept kept = {0, NULL};
    KestrelidDetector* detector = NULL;
    size_t size = 0;
    CHECK(kestrelid_detector_create(NULL, &detector, NULL) == KESTRELID_OK);
    CHECK(kestrelid_detector_validate(detector, NULL, keep, &kept, dispose, NULL) == KESTRELID_OK);
    CHECK(kept.disposed == 1);
    kestrelid_detector_release(detector);

    CHECK(!kestrelid_result_is_passport(kept.result));
    CHECK(kestrelid_result_confidence(kept.result) <= 0.0);
    CHECK(kestrelid_result_reason_count(kept.result) == 1);
    CHECK_TEXT(kestrelid_result_reason(kept.result, 0, &size), "Invalid image");
    CHECK(size == strlen("Invalid image"));
    CHECK(kestrelid_result_reason(kept.result, 1, &size) == NULL && size == 0);
    CHECK_TEXT(kestrelid_result_recognized_text(kept.result, NULL), "");
    kestrelid_result_release(kept.result);
}

static void zonesOfText(void) {
    const char text[] =
        "P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<\n"
        "L898902C36UTO7408132F1204159ZE184226B<<<<<10";  // 13 for 12: two digits fail
    const KestrelidDay day = {2020, 1, 1}, noDay = {2021, 2, 29};
    struct {
        KestrelidZone known;
        int64_t later;
    } newer = {.known = {.struct_size = sizeof(newer)}, .later = 7};
    KestrelidZoneField field = {.struct_size = sizeof(field)};
    KestrelidZones* zones = NULL;
    KestrelidError* error = NULL;
    int32_t kind = 0;
    size_t size = 0;

    INVALID(kestrelid_zones_parse(text, 89, &noDay, &zones, &error), "as_of is no day");
    CHECK(kestrelid_zones_parse(text, 89, &day, &zones, NULL) == KESTRELID_OK);
    CHECK(kestrelid_zones_count(zones) == 1);
    CHECK(kestrelid_zones_zone(zones, 0, &newer.known) && newer.later == 0);
    CHECK(newer.known.format == KESTRELID_TD3 && !newer.known.is_strict);
    CHECK(newer.known.lines == 2 && newer.known.fields == 11 && newer.known.problems == 2);
    CHECK_TEXT(kestrelid_zones_line(zones, 0, 1, &size), strchr(text, '\n') + 1);
    CHECK(size == 44);
    CHECK_TEXT(kestrelid_zones_problem(zones, 0, 0, &kind, &size),
               "line 2, column 20, date of birth: the check digit does not match");
    CHECK(kind == KESTRELID_CHECK_DIGIT_FAILED && size == 64);
    CHECK(kestrelid_zones_field(zones, 0, 6, &field));
    CHECK(field.kind == KESTRELID_DATE_OF_BIRTH && field.check_digit == KESTRELID_DIGIT_FAILED);
    CHECK(field.year == 1974 && field.month == 8 && field.day == 13 && field.is_known_state == -1);
    CHECK(kestrelid_zones_field_state(zones, 0, 6, &size) == NULL && size == 0);
    CHECK(kestrelid_zones_field(zones, 0, 1, &field) && field.is_known_state == 1);
    CHECK_TEXT(kestrelid_zones_field_state(zones, 0, 1, NULL), "Utopia (specimens)");
    CHECK_TEXT(kestrelid_zones_field_text(zones, 0, 3, &size), "ANNA MARIA");
    CHECK(size == 10 && field.year == -1 && field.two_digit_year == -1);
    CHECK(strstr(kestrelid_zones_field_characters(zones, 0, 3, NULL), "ANNA<MARIA<") != NULL);

    field.struct_size = sizeof(size_t);
    CHECK(!kestrelid_zones_field(zones, 0, 0, &field) && !kestrelid_zones_zone(zones, 0, NULL));
    CHECK(!kestrelid_zones_zone(zones, 1, &newer.known));
    CHECK(kestrelid_zones_line(zones, 0, 2, NULL) == NULL);
    CHECK(kestrelid_zones_problem(zones, 0, 2, &kind, NULL) == NULL && kind == -1);
    kestrelid_zones_release(zones);
    CHECK_TEXT(kestrelid_zone_format_name(256), "unknown");  // not TD1 by its last eight bits
}

int main(void) {
    nullHandles();
    nullArguments();
    rawPixels();
    options();
    withoutImage();
    zonesOfText();
    CHECK(KestrelidVersionNumber > 0.0 && strchr(kestrelid_library_version(), '.'));
    return 0;
}
