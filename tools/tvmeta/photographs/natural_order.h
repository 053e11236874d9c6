// The order in which people expect file names: IMG_9 before IMG_10.
#pragma once

#include <string_view>

bool naturalLess(std::string_view a, std::string_view b);
