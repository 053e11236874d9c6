#include "photographs/profile_description.h"

#include "photographs/photo.h"

#include <tvmeta.h>

#include <cstring>

#include <array>
#include <climits>
#include <cwchar>
#include <string_view>

#ifdef TVMETA_HAS_LCMS2
#include <lcms2.h>

#include <memory>
#include <vector>
#endif

namespace {

struct Signature {
    std::string_view code;
    std::string_view meaning;
};

constexpr auto Classes = std::to_array<Signature>({
    {"scnr", "input device"},
    {"mntr", "display"},
    {"prtr", "output device"},
    {"link", "device link"},
    {"spac", "colour space"},
    {"abst", "abstract"},
    {"nmcl", "named colours"},
});

std::string signatureAt(const Bytes& profile, size_t place) {
    std::string code(asText(profile).substr(place, 4));
    return code.substr(0, code.find_last_not_of(' ') + 1);
}

#ifdef TVMETA_HAS_LCMS2
struct ProfileCloser {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};

// In UTF-8, the encoding of the process.
std::string narrow(const wchar_t* text) {
    std::string bytes;
    std::mbstate_t state = {};
    std::array<char, MB_LEN_MAX> character;
    for (; *text != 0; ++text) {
        const size_t length = std::wcrtomb(character.data(), *text, &state);
        if (length > character.size()) {
            return bytes;
        }
        bytes.append(character.data(), length);
    }
    return bytes;
}

std::string describedName(const Bytes& profile) {
    const std::unique_ptr<void, ProfileCloser> opened(
        cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())));
    if (!opened) {
        return {};
    }
    const cmsUInt32Number size = cmsGetProfileInfo(opened.get(), cmsInfoDescription, "en", "US", nullptr, 0);
    std::vector<wchar_t> text(size / sizeof(wchar_t) + 1);
    cmsGetProfileInfo(opened.get(), cmsInfoDescription, "en", "US", text.data(), size);
    return narrow(text.data());
}
#else
std::string describedName(const Bytes&) {
    return {};
}
#endif

} // namespace

std::string profileName(const Bytes& profile) {
    std::string name = describedName(profile);
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
    for (const Signature& known : Classes) {
        if (known.code == code) {
            return std::string(known.meaning);
        }
    }
    return code;
}

std::string profileColourSpace(const Bytes& profile) {
    return signatureAt(profile, 16);
}
