// OpenEXR pictures: the red, green and blue or the luminance channel of the first part, within its data window.

#include "output/failure.h"
#include "pictures/image.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputPart.h>
#include <ImfMultiPartInputFile.h>
#include <ImfPartType.h>

#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <vector>

namespace {

constexpr size_t SampleBytes = sizeof(float);
constexpr size_t Channels = 3;
constexpr size_t PixelBytes = Channels * SampleBytes;

// What the library may reserve memory for on the word of a header.
constexpr int LargestSide = 1 << 16;
constexpr int LargestTile = 1 << 12;

std::string listOf(const Imf::ChannelList& channels) {
    std::string list;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel) {
        list += (list.empty() ? "" : ", ") + std::string(channel.name());
    }
    return list.empty() ? "none" : list;
}

// The names of the channels to read: red, green and blue, or the luminance alone. With colour differences beside it
// the luminance would be but a part of the picture.
std::vector<const char*> chosenChannels(const std::string& path, const Imf::ChannelList& channels) {
    std::vector<const char*> names = {"R", "G", "B"};
    const bool isGrey = channels.findChannel("Y") != nullptr && channels.findChannel("RY") == nullptr;
    if (isGrey && channels.findChannel("R") == nullptr) {
        names = {"Y"};
    }
    for (const char* name : names) {
        const Imf::Channel* channel = channels.findChannel(name);
        if (channel == nullptr) {
            throw Failure(path, "expected channels R, G and B or Y alone, found " + listOf(channels));
        }
        if (channel->xSampling != 1 || channel->ySampling != 1) {
            throw Failure(path, "expected channels of full size, found a reduced " + std::string(name));
        }
    }
    return names;
}

// The empty picture for a data window.
Image imageFor(const std::string& path, const Imath::Box2i& window) {
    constexpr int64_t MostPixels = int64_t{1} << 27; // a TIFF file holds less than 2 GiB, and a pixel takes 12 bytes
    const int64_t width = int64_t{window.max.x} - window.min.x + 1;
    const int64_t height = int64_t{window.max.y} - window.min.y + 1;
    if (width < 1 || height < 1 || width > LargestSide || height > LargestSide || width * height > MostPixels) {
        throw Failure(path, "expected at most " + std::to_string(MostPixels) + " pixels and " +
                                std::to_string(LargestSide) + " to a side, found " + std::to_string(width) + " x " +
                                std::to_string(height));
    }
    return {static_cast<int32_t>(width), static_cast<int32_t>(height), Channels, Depth::Float32};
}

void spreadRed(Bytes& samples) {
    for (size_t i = 0; i < samples.size(); i += PixelBytes) {
        std::memcpy(&samples[i + SampleBytes], &samples[i], SampleBytes);
        std::memcpy(&samples[i + 2 * SampleBytes], &samples[i], SampleBytes);
    }
}

Image readImage(const std::string& path) {
    Imf::Header::setMaxImageSize(LargestSide, LargestSide);
    Imf::Header::setMaxTileSize(LargestTile, LargestTile);
    Imf::MultiPartInputFile file(path.c_str(), 0);
    const Imf::Header& header = file.header(0);
    if (header.hasType() && Imf::isDeepData(header.type())) {
        throw Failure(path, "expected a picture with one sample in each pixel, found a deep one");
    }
    const std::vector<const char*> names = chosenChannels(path, header.channels());
    const Imath::Box2i window = header.dataWindow();
    Image image = imageFor(path, window);
    image.samples.resize(sampleBytes(image));
    Imf::FrameBuffer buffer;
    for (size_t i = 0; i < names.size(); ++i) {
        buffer.insert(names[i], Imf::Slice::Make(Imf::FLOAT, &image.samples[i * SampleBytes], window, PixelBytes,
                                                 PixelBytes * static_cast<size_t>(image.width)));
    }
    Imf::InputPart part(file, 0);
    part.setFrameBuffer(buffer);
    part.readPixels(window.min.y, window.max.y);
    if (names.size() == 1) {
        spreadRed(image.samples);
    }
    return image;
}

} // namespace

Image decodeExr(const std::string& path) {
    try {
        return readImage(path);
    } catch (const Failure&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        throw Failure(path, std::string("it cannot be decoded as OpenEXR: ") + error.what());
    }
}
