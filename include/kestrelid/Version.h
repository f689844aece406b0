#pragma once

#include <kestrelid/Export.h>

#ifdef __cplusplus
extern "C" {
#endif

KESTRELID_EXPORT extern const double KestrelidVersionNumber;
KESTRELID_EXPORT extern const unsigned char
    KestrelidVersionString[];  ///< ends in a line feed and a zero byte

#ifdef __cplusplus
}
#endif
