#include "pictures/profiles.h"

#include "base/failure.h"

#include <tvmeta.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#ifdef TVMETA_HAS_LCMS2

#include <lcms2.h>
#include <lcms2_plugin.h>

#include <climits>
#include <cwchar>
#include <memory>
#include <span>
#include <vector>

namespace {

struct ProfileCloser {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileCloser>;
using Curve = std::shared_ptr<cmsToneCurve>;

Curve owned(cmsToneCurve* curve) {
    return {curve, cmsFreeToneCurve};
}

Curve curveOf(const ColourSpace& space) {
    constexpr size_t Points = 4096;
    if (space.transfer == Transfer::Linear || space.transfer == Transfer::Gamma) {
        return owned(cmsBuildGamma(nullptr, space.gamma));
    }
    std::vector<float> table(Points);
    for (size_t i = 0; i < Points; ++i) {
        table[i] = static_cast<float>(linearLight(space, static_cast<double>(i) / (Points - 1)));
    }
    return owned(cmsBuildTabulatedToneCurveFloat(nullptr, Points, table.data()));
}

cmsCIExyY pointOf(const Chromaticities::Point& point) {
    return {point.x, point.y, 1.0};
}

Profile matrixProfile(const ColourSpace& space) {
    const Chromaticities points = space.primaries.value_or(Bt709Primaries);
    const auto isPositive = [](const Chromaticities::Point& point) { return point.y > 0 && point.y <= 2; };
    if (!luminanceWeights(points) || !isPositive(points.red) || !isPositive(points.green) || points.blue.y == 0) {
        return nullptr;
    }
    const cmsCIExyY white = pointOf(points.white);
    const cmsCIExyYTRIPLE primaries = {pointOf(points.red), pointOf(points.green), pointOf(points.blue)};
    const Curve curve = curveOf(space);
    cmsToneCurve* const curves[] = {curve.get(), curve.get(), curve.get()};
    return Profile(cmsCreateRGBProfile(&white, &primaries, curves));
}

void describe(cmsHPROFILE profile, const std::string& text) {
    cmsMLU* const description = cmsMLUalloc(nullptr, 1);
    cmsMLUsetASCII(description, "en", "US", text.c_str());
    cmsWriteTag(profile, cmsSigProfileDescriptionTag, description);
    cmsMLUfree(description);
}

// All readers support version 2, including the library's get_profile_name(). The code points of PQ and HLG, more exact
// than a curve of 16 bits, require version 4.4.
void setVersion(cmsHPROFILE profile, const ColourSpace& space) {
    const auto& [primaries, transfer, matrix, range] = space.cicp;
    cmsSetProfileVersion(profile, transfer == 0 ? 2.1 : 4.4);
    if (transfer != 0) {
        cmsVideoSignalType codes = {primaries, transfer, matrix, range};
        cmsWriteTag(profile, cmsSigcicpTag, &codes);
    }
}

// The date is fixed, so that equal pictures give equal files.
Bytes saved(cmsHPROFILE profile) {
    constexpr std::array<unsigned char, 12> Date = {7, 230, 0, 1, 0, 1}; // ICC.1, dateTimeNumber: 2022-01-01
    constexpr size_t DateOffset = 24;
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    Bytes bytes(size);
    if (size == 0 || cmsSaveProfileToMem(profile, bytes.data(), &size) == FALSE) {
        return {};
    }
    std::ranges::copy(Date, bytes.begin() + DateOffset);
    return bytes;
}

Profile opened(const Bytes& bytes) {
    return Profile(cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
}

template <typename Tag>
const Tag* read(const Profile& profile, cmsTagSignature signature) {
    return static_cast<const Tag*>(cmsReadTag(profile.get(), signature));
}

// In UTF-8, the encoding of the process, up to the first character that is none.
std::string narrow(const std::vector<wchar_t>& text) {
    std::string bytes(text.size() * MB_LEN_MAX, '\0');
    const wchar_t* rest = text.data();
    std::mbstate_t state = {};
    std::wcsrtombs(bytes.data(), &rest, bytes.size(), &state);
    return bytes.c_str();
}

// The colorants of a profile are adapted to its connection space. Undoes that, so that equal colours have equal weights
// whether a profile or chromaticities describe them. Old profiles state their white instead of the adaptation.
std::optional<Weights> weightsOf(const Profile& profile) {
    cmsMAT3 adaptation = {};
    const auto* rows = read<cmsCIEXYZ>(profile, cmsSigChromaticAdaptationTag);
    const auto* white = read<cmsCIEXYZ>(profile, cmsSigMediaWhitePointTag);
    for (int i = 0; i < 3 && rows != nullptr; ++i) {
        adaptation.v[i] = {{rows[i].X, rows[i].Y, rows[i].Z}};
    }
    cmsMAT3 inverse = {};
    if (rows != nullptr && _cmsMAT3inverse(&adaptation, &inverse) == FALSE) {
        return std::nullopt;
    }
    Weights weights = {};
    constexpr std::array Colorants = {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};
    for (size_t i = 0; i < weights.size(); ++i) {
        const auto* colorant = read<cmsCIEXYZ>(profile, Colorants[i]);
        if (colorant == nullptr) {
            return std::nullopt;
        }
        cmsCIEXYZ seen = *colorant;
        if (rows != nullptr) {
            const double* const row = inverse.v[1].n;
            seen.Y = row[0] * colorant->X + row[1] * colorant->Y + row[2] * colorant->Z;
        } else if (white != nullptr) {
            cmsAdaptToIlluminant(&seen, cmsD50_XYZ(), white, colorant);
        }
        weights[i] = seen.Y;
    }
    return weights;
}

// lcms2 rounds the results of tables to 16 bits, which are coarse in the shadows. Past its end a table goes on
// straight.
double lightOf(const cmsToneCurve& curve, double sample) {
    if (cmsGetToneCurveParametricType(&curve) != 0) {
        return double{cmsEvalToneCurveFloat(&curve, static_cast<float>(sample))};
    }
    constexpr double White = 65535;
    const std::span table(cmsGetToneCurveEstimatedTable(&curve), cmsGetToneCurveEstimatedTableEntries(&curve));
    const double place = sample * static_cast<double>(table.size() - 1);
    const size_t first = std::min(static_cast<size_t>(place), table.size() - 2);
    return (table[first] + (place - static_cast<double>(first)) * (table[first + 1] - table[first])) / White;
}

} // namespace

Bytes profileOf(const ColourSpace& space) {
    const bool isSrgb = space.transfer == Transfer::Srgb && !space.primaries;
    const Profile profile = isSrgb ? Profile(cmsCreate_sRGBProfile()) : matrixProfile(space);
    if (profile == nullptr) {
        return {};
    }
    setVersion(profile.get(), space);
    describe(profile.get(), isSrgb                               ? "sRGB IEC61966-2.1"
                            : space.transfer == Transfer::Linear ? "Linear RGB of the picture"
                                                                 : "RGB of the picture, " + space.name);
    return saved(profile.get());
}

std::string profileDescription(const Bytes& bytes) {
    const Profile profile = opened(bytes);
    if (profile == nullptr) {
        return {};
    }
    const cmsUInt32Number size = cmsGetProfileInfo(profile.get(), cmsInfoDescription, "en", "US", nullptr, 0);
    std::vector<wchar_t> text(size / sizeof(wchar_t) + 1);
    cmsGetProfileInfo(profile.get(), cmsInfoDescription, "en", "US", text.data(), size);
    return narrow(text);
}

std::optional<ProfileLight> profileLight(const Bytes& bytes) {
    const Profile profile = opened(bytes);
    if (profile == nullptr) {
        return std::nullopt;
    }
    const bool isGrey = cmsGetColorSpace(profile.get()) == cmsSigGrayData;
    const std::optional<Weights> weights = isGrey ? Bt709Weights : weightsOf(profile);
    if (!weights || (!isGrey && cmsGetColorSpace(profile.get()) != cmsSigRgbData)) {
        return std::nullopt;
    }
    constexpr std::array Curves = {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
    ProfileLight light = {.curves = {}, .weights = *weights};
    for (size_t i = 0; i < Curves.size(); ++i) {
        const auto* stored = read<cmsToneCurve>(profile, isGrey ? cmsSigGrayTRCTag : Curves[i]);
        if (stored == nullptr) {
            return std::nullopt;
        }
        if (cmsIsToneCurveLinear(stored) == FALSE) {
            light.curves[i] = [curve = owned(cmsDupToneCurve(stored))](double sample) {
                return sample < 0 ? -lightOf(*curve, -sample) : lightOf(*curve, sample);
            };
        }
    }
    return light;
}

#else

Bytes profileOf(const ColourSpace&) {
    return {};
}

std::string profileDescription(const Bytes&) {
    return {};
}

std::optional<ProfileLight> profileLight(const Bytes&) {
    return std::nullopt;
}

#endif

namespace {

using Signature = std::pair<std::string_view, const char*>;
constexpr Signature Classes[] = {{"scnr", "input device"}, {"mntr", "display"},      {"prtr", "output device"},
                                 {"link", "device link"},  {"spac", "colour space"}, {"abst", "abstract"},
                                 {"nmcl", "named colours"}};

std::string signatureAt(const Bytes& profile, size_t place) {
    std::string code(asText(profile).substr(std::min(place, profile.size()), 4));
    return code.substr(0, code.find_last_not_of(' ') + 1);
}

} // namespace

void requireProfile(const std::string& path, const Bytes& profile) {
    constexpr size_t HeaderSize = 128;
    if (profile.size() < HeaderSize) {
        throw Failure(path, "expected an ICC profile of 128 bytes or more, found " + std::to_string(profile.size()));
    }
    if (const std::string signature(asText(profile).substr(36, 4)); signature != "acsp") {
        throw Failure(path, "expected an ICC profile with \"acsp\" at byte 36, found \"" + signature + "\"");
    }
}

std::string profileName(const Bytes& profile) {
    std::string name = profileDescription(profile);
    char shortName[32] = {};
    if (name.empty() && get_profile_name(librarySize(profile), profile.data(), shortName) > 0) {
        name.assign(shortName, strnlen(shortName, sizeof shortName)); // without a terminator if it is full
    }
    return name;
}

std::string profileVersion(const Bytes& profile) {
    return std::to_string(profile[8]) + "." + std::to_string(profile[9] >> 4);
}

std::string profileClass(const Bytes& profile) {
    const std::string code = signatureAt(profile, 12);
    const auto* const known = std::ranges::find(Classes, code, &Signature::first);
    return known == std::end(Classes) ? code : known->second;
}

std::string profileColourSpace(const Bytes& profile) {
    return signatureAt(profile, 16);
}
