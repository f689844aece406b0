#pragma once

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// Ends the test where a condition does not hold.
#define CHECK(condition)                                                                           \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            fprintf(stderr, "%s:%d: %s does not hold\n", __FILE__, __LINE__, #condition);          \
            exit(1);                                                                               \
        }                                                                                          \
    } while (0)

#define CHECK_TEXT(actual, expected)                                                               \
    do {                                                                                           \
        if (strcmp((actual), (expected)) != 0) {                                                   \
            fprintf(stderr, "%s:%d: \"%s\" is not \"%s\"\n", __FILE__, __LINE__, (actual),         \
                    (expected));                                                                   \
            exit(1);                                                                               \
        }                                                                                          \
    } while (0)
