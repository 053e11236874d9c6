// Results with the metadata of a photograph: what is written, what is lost, and a check of what was written.
#pragma once

#include "photographs/photo.h"

#include <tvmeta_photo.h>

#include <string>
#include <vector>

// What the library cannot keep, as words: "maker notes", "3 private tags".
std::vector<std::string> lossWords(const std::vector<tvmeta_Loss>& losses);

// Borrowed keywords for the library. Throws WrongCommandLine for one that it does not accept.
std::vector<const char*> keywordTexts(const std::vector<std::string>& keywords);

// Saves a TIFF file and returns what was lost. `shown` is the path for messages. Throws Failure if the file cannot be
// written, or does not say what the photograph says.
std::vector<tvmeta_Loss> saveResult(const tvmeta_Result& result, const std::string& shown);

// The directories alone as an EXIF block; adds what was lost.
Bytes exifBlock(const tvmeta_Result& result, const std::string& shown, std::vector<tvmeta_Loss>& losses);
