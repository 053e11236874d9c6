// Converts the sample format of a picture in place.
#pragma once

#include "pictures/picture.h"

void widenTo16Bits(Picture& picture);   // from 8 bits
void convertToHalf(Picture& picture);   // from 32-bit floats
void convertFromHalf(Picture& picture); // to 32-bit floats
