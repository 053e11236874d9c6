// The report: bracketed sets as one HTML page, without scripts and without anything from elsewhere.
#pragma once

#include "photographs/photo_sets.h"

#include <functional>
#include <string>
#include <string_view>

// Hands the page over piece by piece; the thumbnails of one set are in memory at a time.
void writeReport(const PhotoSets& found, const std::function<void(std::string_view)>& write);
