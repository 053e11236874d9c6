// One decoder per picture format. Each throws Failure if the file is damaged or not supported. A decoder is null if its
// library is missing in the build.
#pragma once

#include "pictures/picture.h"

#include <string>

// How much of a file to read: Header leaves the samples empty.
enum class Part { Header, Everything };

using Decoder = Picture (*)(const std::string& path, Part part);

Picture readPnm(const std::string& path, Part part);
Picture readRadiance(const std::string& path, Part part);

#ifdef TVMETA_HAS_PNG
Picture readPng(const std::string& path, Part part);
#else
constexpr Decoder readPng = nullptr;
#endif

#ifdef TVMETA_HAS_TIFF
Picture readTiff(const std::string& path, Part part);
#else
constexpr Decoder readTiff = nullptr;
#endif

#ifdef TVMETA_HAS_JPEG
Picture readJpeg(const std::string& path, Part part);

// The samples of the picture in an open JPEG file at the smallest scale by eighths whose longer side has at least
// `side` pixels, if the picture has.
Picture readSmallJpeg(File file, const std::string& name, int32_t side);

// A JPEG file with the samples, 8 bits each, of a grey or RGB picture.
Bytes encodeJpeg(const Picture& picture);
#else
constexpr Decoder readJpeg = nullptr;
#endif

#ifdef TVMETA_HAS_EXR
Picture readExr(const std::string& path, Part part);
#else
constexpr Decoder readExr = nullptr;
#endif
