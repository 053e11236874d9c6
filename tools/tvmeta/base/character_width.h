// The one thing that texts ask of the system, which implements it.
#pragma once

// The columns of a character in a terminal; -1 if it is not printable.
int characterWidth(char32_t character);
