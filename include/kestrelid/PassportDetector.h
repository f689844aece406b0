#pragma once

/// The detector, and the services of this machine that its create() takes by default.
#include <kestrelid/DefaultServices.h>
#include <kestrelid/detection/PassportDetector.h>
