#include "pictures/profile_header.h"

#include "base/failure.h"
#include "pictures/profiles.h"

#include <tvmeta.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

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
