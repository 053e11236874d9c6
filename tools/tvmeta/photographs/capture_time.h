// When photographs were taken, by the clocks of their cameras.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

// EXIF times name no time zone. Counted as civil time, the seconds between two do not depend on the zone of the
// computer, nor on its daylight saving time.
using CivilTime = std::chrono::local_seconds;

// The time of a text "YYYY:MM:DD HH:MM:SS" (EXIF 2.3, DateTimeOriginal); none for anything else and for dates that do
// not exist, such as that of a camera whose clock was never set.
std::optional<CivilTime> parseCaptureTime(std::string_view text);
