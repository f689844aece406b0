// c-host: verdict and machine-readable zones of a picture, in C99. Exit status 1 if there is none.
#include <kestrelid/kestrelid.h>
#include <stdio.h>

static void show(const KestrelidZones* zones) {
    for (size_t index = 0; index < kestrelid_zones_count(zones); ++index) {
        KestrelidZone zone = {.struct_size = sizeof(zone)};
        kestrelid_zones_zone(zones, index, &zone);
        printf("; %s, %s", kestrelid_zone_format_name(zone.format),
               zone.is_strict ? "strict" : "not strict");
        for (size_t problem = 0; problem < zone.problems; ++problem)
            printf("; %s", kestrelid_zones_problem(zones, index, problem, NULL, NULL));
    }
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: c-host PICTURE\n");
        return 2;
    }
    KestrelidDetector* detector = NULL;
    KestrelidImage* image = NULL;
    KestrelidResult* result = NULL;
    KestrelidZones* zones = NULL;
    KestrelidError* error = NULL;
    const int failed =
        kestrelid_detector_create(NULL, &detector, &error) ||
        kestrelid_image_read(argv[1], &image, &error) ||
        kestrelid_detector_examine_wait(detector, image, NULL, &result, &zones, &error);
    if (failed) {
        fprintf(stderr, "%s\n", kestrelid_error_text(error));
    } else {
        printf(kestrelid_result_is_passport(result) ? "a passport" : "not a passport");
        show(zones);
        printf("\n");
    }
    kestrelid_error_free(error);
    kestrelid_zones_release(zones);  // wipes what the document says
    kestrelid_result_release(result);
    kestrelid_image_release(image);
    kestrelid_detector_release(detector);
    return failed;
}
