// Changes the sample format of a picture, within its memory.
#pragma once

#include "pictures/picture.h"

void widenTo16Bits(Picture& picture);   // from 8 bits
void convertToHalf(Picture& picture);   // from 32-bit floats
void convertFromHalf(Picture& picture); // to 32-bit floats
