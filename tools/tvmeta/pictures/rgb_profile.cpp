#include "pictures/rgb_profile.h"

#ifdef TVMETA_HAS_LCMS2

#include <lcms2.h>

#include <algorithm>
#include <array>

namespace {

// All readers support version 2, including the library's get_profile_name().
constexpr double ProfileVersion = 2.1;

void describe(cmsHPROFILE profile, const char* text) {
    cmsMLU* const description = cmsMLUalloc(nullptr, 1);
    cmsMLUsetASCII(description, "en", "US", text);
    cmsWriteTag(profile, cmsSigProfileDescriptionTag, description);
    cmsMLUfree(description);
}

// Closes the profile and returns its bytes. The date is fixed, so that equal pictures give equal files.
Bytes saved(cmsHPROFILE profile, const char* description) {
    constexpr std::array<unsigned char, 12> Date = {7, 230, 0, 1, 0, 1}; // ICC.1, dateTimeNumber: 2022-01-01
    constexpr size_t DateOffset = 24;
    if (profile == nullptr) {
        return {};
    }
    cmsSetProfileVersion(profile, ProfileVersion);
    describe(profile, description);
    cmsUInt32Number size = 0;
    Bytes bytes;
    if (cmsSaveProfileToMem(profile, nullptr, &size) != FALSE) {
        bytes.resize(size);
        const bool isSaved = cmsSaveProfileToMem(profile, bytes.data(), &size) != FALSE;
        bytes.resize(isSaved ? size : 0);
    }
    cmsCloseProfile(profile);
    if (!bytes.empty()) {
        std::ranges::copy(Date, bytes.begin() + DateOffset);
    }
    return bytes;
}

cmsCIExyY pointOf(Chromaticities::Point point) {
    return {point.x, point.y, 1.0};
}

// The area of the triangle of primaries; with none there is no matrix.
bool isTriangle(const Chromaticities& c) {
    constexpr double SmallestArea = 1e-4;
    const double area = (c.green.x - c.red.x) * (c.blue.y - c.red.y) - (c.blue.x - c.red.x) * (c.green.y - c.red.y);
    const auto isPositive = [](Chromaticities::Point point) { return point.y > 0 && point.y <= 2; };
    return (area > SmallestArea || area < -SmallestArea) && isPositive(c.white) && isPositive(c.red) &&
           isPositive(c.green) && c.blue.y != 0;
}

} // namespace

Bytes linearRgbProfile(const Chromaticities& chromaticities) {
    if (!isTriangle(chromaticities)) {
        return {};
    }
    const cmsCIExyY white = pointOf(chromaticities.white);
    const cmsCIExyYTRIPLE primaries = {pointOf(chromaticities.red), pointOf(chromaticities.green),
                                       pointOf(chromaticities.blue)};
    cmsToneCurve* const linear = cmsBuildGamma(nullptr, 1.0);
    cmsToneCurve* const curves[] = {linear, linear, linear};
    cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
    cmsFreeToneCurve(linear);
    return saved(profile, "Linear RGB of the picture");
}

Bytes srgbProfile() {
    return saved(cmsCreate_sRGBProfile(), "sRGB IEC61966-2.1");
}

#else

Bytes linearRgbProfile(const Chromaticities&) {
    return {};
}

Bytes srgbProfile() {
    return {};
}

#endif
