#pragma once

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// Ends the test where a condition does not hold.
#define CHECK(condition)                                                                           \
    ((condition) ? (void)0                                                                         \
                 : (fprintf(stderr, "%s:%d: %s does not hold\n", __FILE__, __LINE__, #condition),  \
                    exit(1)))

#define CHECK_TEXT(actual, expected) CHECK(strcmp((actual), (expected)) == 0)
