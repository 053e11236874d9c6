// The insertion of a settings description into an XMP packet.
#include "support.h"

using namespace fuzz;

namespace {

// Whether `packet` with `description` at `point` gives `grown`.
bool isInsertion(std::string_view grown, std::string_view packet, std::string_view description, std::size_t point) {
    return grown.substr(0, point) == packet.substr(0, point) &&
           grown.substr(point + description.size()) == packet.substr(point);
}

// Where the description was inserted.
std::size_t insertionPoint(std::string_view grown, std::string_view packet, std::string_view description) {
    require(grown.size() == packet.size() + description.size(), "the packet grows by the description");
    std::size_t point = grown.find(description);
    while (point != std::string_view::npos && !isInsertion(grown, packet, description, point)) {
        point = grown.find(description, point + 1);
    }
    require(point != std::string_view::npos, "the packet around the description is unchanged");
    return point;
}

void checkGrown(std::string_view grown, std::string_view packet, std::string_view description, std::int32_t method) {
    const std::size_t point = insertionPoint(grown, packet, description);
    require(countedDeclarations(grown) == countedDeclarations(packet) + 1, "there is one more declaration");
    require(detectedMethod(grown.substr(point)) == method, "the description is found");
    require(countedDeclarations(packet.substr(0, point)) > 0 || detectedMethod(grown) == method,
            "the new description is found first");
}

void checkFailure(std::int32_t result, const std::vector<char>& buffer, std::string_view packet) {
    require(result == -1 || result == -34 || result <= -lengthOf(packet.size()), "the failure is documented");
    require(std::equal(packet.begin(), packet.end(), buffer.begin()), "a failure leaves the packet unchanged");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::int32_t method = input.PickValueInArray(MethodCodes);
    const std::int32_t pass = input.ConsumeIntegralInRange<std::int32_t>(1, 1000);
    const Settings settings = takeSliders(input);
    const std::string packet = input.ConsumeRemainingBytesAsString();

    const std::int32_t measured = insert_xmp(0, method, settings.data(), 0, 0, nullptr);
    const std::int32_t shift = measured + (pass >= 100 ? 1 : 0) + (pass >= 1000 ? 1 : 0);
    std::vector<char> description(static_cast<std::size_t>(shift));
    require(embed_xmp(pass, method + 200, settings.data(), 0, nullptr, description.data()) == shift,
            "the description has the measured size");

    std::vector<char> buffer(packet.size() + description.size());
    packet.copy(buffer.data(), packet.size());
    const std::int32_t result =
        insert_xmp(pass, method, settings.data(), lengthOf(packet.size()), shift, buffer.data());
    if (result < 0) {
        checkFailure(result, buffer, packet);
        return 0;
    }
    require(result == shift, "the result is the length of the description");
    checkGrown({buffer.data(), buffer.size()}, packet, {description.data(), description.size()}, method);
    return 0;
}
