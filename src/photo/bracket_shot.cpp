// tvmeta_shot(): the record of a file for the search for brackets.
#include "photo/brackets.h"
#include "photo/fractions.h"
#include "support/text_search.h"

#include <algorithm>
#include <string_view>

using namespace tvmeta;
using namespace tvmeta::brackets;

namespace {

constexpr std::uint64_t HashStart = 1;

float number(const tvmeta_Rational& rational) {
    return rational.denominator == 0 ? 0 : static_cast<float>(quotient(rational));
}

} // namespace

int32_t tvmeta_shot(const tvmeta_Photo* photo, const char* folder, const char* name,
                    tvmeta_Shot* shot) TVMETA_NOEXCEPT {
    if (photo == nullptr || shot == nullptr || photo->recordSize < sizeof photo->recordSize ||
        shot->recordSize < sizeof shot->recordSize) {
        return TVMETA_BAD_ARGUMENT;
    }
    const tvmeta_Photo from = recordAt<tvmeta_Photo>(photo, photo->recordSize, 0);
    const std::string_view serial = textOf(from.serialNumber);
    tvmeta_Shot to = {};
    to.recordSize = shot->recordSize;
    to.format = from.format;
    to.folder = folder;
    to.name = name;
    to.camera = hashText(hashText(HashStart, textOf(from.make)), textOf(from.model));
    to.serialNumber = serial.empty() ? 0 : hashText(HashStart, serial);
    to.present = from.present;
    to.captureTime = from.captureTime;
    to.captureNanoseconds = from.captureNanoseconds;
    to.utcOffset = from.utcOffset;
    to.exposureTime = number(from.exposureTime);
    to.fNumber = number(from.fNumber);
    to.isoSpeed = static_cast<float>(from.isoSpeed);
    to.exposureBias = number(from.exposureBias);
    to.focalLength = number(from.focalLength);
    to.exposureMode = from.exposureMode;
    to.width = from.width;
    to.height = from.height;
    to.orientation = from.orientation;
    to.hidesBrackets = beginsWithWord(textOf(from.make), "nikon") ? 1 : 0;
    std::memcpy(shot, &to, std::min<std::size_t>(to.recordSize, sizeof to));
    return TVMETA_OK;
}
