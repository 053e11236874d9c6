// Capture times, by the clock of the camera.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

// EXIF times have no time zone. As civil times, their differences do not depend on the time zone and daylight saving
// time of the computer.
using CivilTime = std::chrono::local_seconds;

// Parses "YYYY:MM:DD HH:MM:SS" (EXIF 2.3, DateTimeOriginal). Empty for other texts and for invalid dates, such as those
// of a camera whose clock was never set.
std::optional<CivilTime> parseCaptureTime(std::string_view text);
