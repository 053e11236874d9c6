// Capture times, by the clock of the camera.
#pragma once

#include <chrono>

// Without a time zone, the differences of these times do not depend on the time zone and daylight saving time of the
// computer.
using CivilTime = std::chrono::local_seconds;
