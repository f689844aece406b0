#pragma once

#include <kestrelid/Export.h>

extern "C" {

KESTRELID_EXPORT extern const double KestrelidVersionNumber;
KESTRELID_EXPORT extern const unsigned char
    KestrelidVersionString[];  // ends in a line feed and a zero byte
}
