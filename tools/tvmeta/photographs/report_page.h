// The report: bracketed sets as one self-contained HTML page without scripts.
#pragma once

#include "photographs/photo_sets.h"

#include <functional>
#include <string>
#include <string_view>

// Passes the page to the callback in parts; only the thumbnails of one set are in memory.
void writeReport(const PhotoSets& found, const std::function<void(std::string_view)>& write);
