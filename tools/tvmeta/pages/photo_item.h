// A photograph on a page: thumbnail, caption, and a larger picture that a click shows.
#pragma once

#include "pages/page_content.h"

#include <string>

// An item of a list as markup, with few elements, because pages can have thousands. `facts` is markup that precedes the
// name of the file in the caption. `id` is unique.
std::string photoItem(const PagePhoto& photo, const std::string& facts, const std::string& id);
