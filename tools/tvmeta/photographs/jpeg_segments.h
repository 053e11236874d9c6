// The segments of JPEG files before the image data (ITU-T T.81, annex B).
#pragma once

#include "system/files.h"

#include <cstdio>
#include <string_view>
#include <vector>

struct JpegSegment {
    int marker = 0;
    Region data; // without marker and length
};

// The segments up to the start of the scan or the first damage.
std::vector<JpegSegment> readJpegSegments(std::FILE* file);

// The region after the identifier of the segment; empty if the segment has another identifier.
Region afterIdentifier(std::FILE* file, const JpegSegment& segment, int marker, std::string_view identifier);

constexpr int App1 = 0xE1;
constexpr int App2 = 0xE2;
constexpr int App13 = 0xED;
