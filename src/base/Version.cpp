#include <kestrelid/Version.h>

const double KestrelidVersionNumber = 1.0;
const unsigned char KestrelidVersionString[] = "@(#)PROGRAM:Kestrelid  PROJECT:Tidewharf-1\n";
