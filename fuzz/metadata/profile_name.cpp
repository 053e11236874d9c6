// The name of an ICC profile's colour space.
#include "support.h"

using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes profile(data, data + size);
    const std::array<std::pair<std::int32_t, std::string_view>, 4> names = {
        {{-1, ""}, {4, "sRGB"}, {9, "Adobe RGB"}, {12, "ProPhoto RGB"}}};
    std::vector<char> name(32, 'x');
    const std::int32_t result = get_profile_name(lengthOf(size), profile.data(), name.data());
    if (result == lengthOf(name.size())) {
        const std::string_view text = textOf(data, size);
        const std::string_view described(name.data(), name.size());
        // Bytes past the end of the profile are zeros.
        require(text.find(described.substr(0, described.find_last_not_of('\0') + 1)) != std::string_view::npos,
                "another description is unchanged");
        return 0;
    }
    const auto* const found =
        std::find_if(names.begin(), names.end(), [&](const auto& n) { return n.first == result; });
    require(found != names.end(), "the result is documented");
    std::array<char, 32> expected = {};
    found->second.copy(expected.data(), expected.size());
    require(std::equal(expected.begin(), expected.end(), name.begin()), "the name matches the result");
    return 0;
}
