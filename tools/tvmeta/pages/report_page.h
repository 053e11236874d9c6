// The report: bracketed sets as one HTML page without scripts.
#pragma once

#include "pages/page_content.h"

#include <functional>
#include <string_view>

// Passes the page to the callback in parts; only the pictures of one photograph are in memory.
void writeReport(const PageContent& content, const std::function<void(std::string_view)>& write);
