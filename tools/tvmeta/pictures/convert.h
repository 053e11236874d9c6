// Converts the sample format of a picture in place.
#pragma once

#include "pictures/picture.h"

void widenTo16Bits(Picture& picture);   // from 8 bits
void convertFromHalf(Picture& picture); // to 32-bit floats

// From 32-bit floats. Returns the number of samples out of the range of half floats, which become the end of the range.
uint64_t convertToHalf(Picture& picture);
