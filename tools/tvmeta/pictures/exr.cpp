// OpenEXR pictures: the red, green and blue or the luminance channel of the first part, within its data window.

#include "base/failure.h"
#include "base/words.h"
#include "pictures/decoders.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputPart.h>
#include <ImfMultiPartInputFile.h>
#include <ImfPartType.h>
#include <ImfStandardAttributes.h>

#include <algorithm>
#include <exception>
#include <new>
#include <string>
#include <vector>

namespace {

// Limits on the memory that OpenEXR reserves because of a header.
constexpr int MaxExrSide = 1 << 16;
constexpr int MaxTileSide = 1 << 12;

using Names = std::vector<std::string>;

Names namesOf(const Imf::ChannelList& channels) {
    Names names;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        names.emplace_back(channel.name());
    }
    return names;
}

// The channels to read: red, green and blue, or only the luminance. With colour differences, the luminance would be
// only a part of the picture.
Names chosenChannels(const std::string& path, const Imf::ChannelList& channels) {
    Names names = {"R", "G", "B"};
    const bool isGrey = channels.findChannel("Y") != nullptr && channels.findChannel("RY") == nullptr;
    if (isGrey && channels.findChannel("R") == nullptr) {
        names = {"Y"};
    }
    for (const std::string& name : names) {
        const Imf::Channel* channel = channels.findChannel(name);
        if (channel == nullptr) {
            throw Failure(path, "expected channels R, G and B or Y alone, found " +
                                    (channels.begin() == channels.end() ? "none" : joined(namesOf(channels))));
        }
        if (channel->xSampling != 1 || channel->ySampling != 1) {
            throw Failure(path, "expected channels of full size, found a subsampled " + name);
        }
    }
    return names;
}

bool areHalf(const Imf::ChannelList& channels, const Names& names) {
    return std::ranges::all_of(names,
                               [&](const std::string& name) { return channels.findChannel(name)->type == Imf::HALF; });
}

Picture withoutSamples(const std::string& path, const Imf::Header& header, const Names& names) {
    const Imath::Box2i& window = header.dataWindow();
    return pictureWithoutSamples(path, int64_t{window.max.x} - window.min.x + 1,
                                 int64_t{window.max.y} - window.min.y + 1, static_cast<int32_t>(names.size()),
                                 areHalf(header.channels(), names) ? Depth::Float16 : Depth::Float32);
}

// The chromaticities of the file; unknown in most files.
void takeColours(const Imf::Header& header, Picture& picture) {
    if (Imf::hasChromaticities(header)) {
        const auto point = [](const Imath::V2f& from) { return Chromaticities::Point{from.x, from.y}; };
        const Imf::Chromaticities& colours = Imf::chromaticities(header);
        picture.colours = {
            .name = "chromaticities",
            .primaries = {{point(colours.red), point(colours.green), point(colours.blue), point(colours.white)}}};
    }
}

void noteRest(const Imf::MultiPartInputFile& file, const Names& names, Picture& picture) {
    Names others;
    bool hasIntegers = false;
    const Imf::ChannelList& channels = file.header(0).channels();
    for (const std::string& name : namesOf(channels)) {
        const bool isRead = std::ranges::find(names, name) != names.end();
        hasIntegers = hasIntegers || (isRead && channels.findChannel(name)->type == Imf::UINT);
        if (name == "A") {
            picture.dropped.emplace_back("alpha");
        } else if (!isRead) {
            others.push_back(name);
        }
    }
    if (!others.empty()) {
        picture.dropped.push_back((others.size() == 1 ? "channel " : "channels ") + joined(others));
    }
    if (hasIntegers) {
        picture.dropped.emplace_back("precision of 32-bit integers");
    }
    if (file.parts() > 1) {
        picture.dropped.emplace_back("further parts");
    }
}

void readPixels(Imf::MultiPartInputFile& file, const Names& names, Picture& picture) {
    picture.samples.resize(sampleBytes(picture));
    const Imath::Box2i& window = file.header(0).dataWindow();
    const auto sampleSize = static_cast<size_t>(bytesPerSample(picture.depth));
    Imf::FrameBuffer buffer;
    for (size_t i = 0; i < names.size(); ++i) {
        buffer.insert(names[i], Imf::Slice::Make(picture.depth == Depth::Float16 ? Imf::HALF : Imf::FLOAT,
                                                 picture.samples.data() + i * sampleSize, window,
                                                 names.size() * sampleSize, rowBytes(picture)));
    }
    Imf::InputPart part(file, 0);
    part.setFrameBuffer(buffer);
    part.readPixels(window.min.y, window.max.y);
}

Picture readFirstPart(const std::string& path, Request request) {
    Imf::Header::setMaxImageSize(MaxExrSide, MaxExrSide);
    Imf::Header::setMaxTileSize(MaxTileSide, MaxTileSide);
    Imf::MultiPartInputFile file(readablePath(path).c_str(), 0);
    const Imf::Header& header = file.header(0);
    if (header.hasType() && Imf::isDeepData(header.type())) {
        throw Failure(path, "expected a picture with one sample in each pixel, found a deep picture");
    }
    const Names names = chosenChannels(path, header.channels());
    Picture picture = withoutSamples(path, header, names);
    takeColours(header, picture);
    noteRest(file, names, picture);
    if (request.pixels) {
        readPixels(file, names, picture);
    }
    return picture;
}

} // namespace

Picture readExr(const std::string& path, Request request) {
    openFile(path); // reports why the file cannot be read
    try {
        return readFirstPart(path, request);
    } catch (const Failure&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        throw Failure(path, std::string("cannot be decoded as OpenEXR: ") + error.what());
    }
}
