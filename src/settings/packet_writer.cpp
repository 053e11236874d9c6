// Writes a settings packet (ISO 16684-1, serialisation in RDF). The text is described once; a sink measures it or
// writes it.
#include "settings/packet_writer.h"

#include "settings/methods.h"
#include "settings/value_curves.h"
#include "settings/xmp_names.h"
#include "support/packed_numbers.h"
#include "support/text_numbers.h"
#include "tvmeta.h"

#include <algorithm>
#include <iterator>

namespace tvmeta {

namespace {

constexpr std::string_view PacketOpening = "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n"
                                           "<rdf:RDF xmlns:rdf='" TVMETA_RDF_URI "'>\n\n";
constexpr std::string_view PacketClosing = "</rdf:RDF>\n</x:xmpmeta>\n";
constexpr std::string_view DescriptionClosing = "</rdf:Description>\n\n";
constexpr std::string_view LensOpening = "<rdf:Description rdf:about=''\nxmlns:aux='" TVMETA_AUX_URI "'>\n<aux:Lens>";
constexpr std::string_view LensClosing = "</aux:Lens>\n";
constexpr std::string_view SettingsOpening =
    "<rdf:Description rdf:about=''\nxmlns:tvtm='http://" TVMETA_MAKER_HOST "/tonalvista_settings";
constexpr std::string_view SettingsVersion = "'>\n<tvtm:Version>5.0</tvtm:Version>\n";

// Appends pieces of text to a buffer; without a buffer it only counts their bytes.
class TextSink {
  public:
    explicit TextSink(char* out) : out_(out) {}

    template <typename... Texts>
    void put(Texts... texts) {
        (append(texts), ...);
    }

    std::size_t size() const { return size_; }

  private:
    void append(std::string_view text) {
        if (out_ != nullptr) {
            copyBytes(out_ + size_, text.data(), text.size());
        }
        size_ += text.size();
    }

    char* out_;
    std::size_t size_ = 0;
};

const Word& smoothingLevel(float level) {
    constexpr float Last = static_cast<float>(std::size(SmoothingLevels) - 1);
    return SmoothingLevels[level > 0.0F ? static_cast<std::size_t>(std::min(level, Last)) : 0]; // NaN gives 0
}

void putNumber(TextSink& sink, float value, int decimals) {
    char buffer[PrintedFloatSize];
    sink.put(printFixed(buffer, value, decimals));
}

void putPadded(TextSink& sink, const Word& word, std::size_t width) {
    constexpr std::string_view Spaces = "        ";
    static_assert(Spaces.size() >= SmoothingLevelWidth && Spaces.size() >= YesNoWidth);
    sink.put(word.text, textFrom(Spaces.substr(0, width), word.text.size()));
}

void putValue(TextSink& sink, const Parameter& parameter, const float* settings) {
    const float slot = settings[parameter.slot];
    switch (parameter.kind) {
    case ValueKind::SmoothingMode:
        sink.put(SmoothingModes[smoothsBySlider(settings) ? 1 : 0].text);
        break;
    case ValueKind::Smoothing:
        if (smoothsBySlider(settings)) {
            putNumber(sink, settings[SmoothingSliderSlot], 1);
        } else {
            putPadded(sink, smoothingLevel(slot), SmoothingLevelWidth);
        }
        break;
    case ValueKind::Panorama:
        putPadded(sink, YesNo[slot > 0.0F ? 1 : 0], YesNoWidth);
        break;
    default: {
        const KindForm& form = formOf(parameter.kind);
        putNumber(sink, form.fromSlot(slot), form.decimals);
    }
    }
}

void putDescription(TextSink& sink, const PacketRequest& request) {
    const std::int32_t number = request.namespaceNumber; // above 0, in two digits or more
    sink.put(SettingsOpening, number < 10 ? "0" : "", PrintedInteger(number).text(), SettingsVersion);
    if (const Method* const method = findMethod(request.method)) {
        sink.put("<tvtm:Method>", method->name, "</tvtm:Method>\n");
        for (const Parameter& parameter : method->parameters) {
            sink.put("<tvtm:", parameter.name, ">");
            putValue(sink, parameter, request.settings);
            sink.put("</tvtm:", parameter.name, ">\n");
        }
    }
    sink.put(DescriptionClosing);
}

} // namespace

PacketRequest packetRequest(std::int32_t methodArgument, const float* settings) {
    const bool isWrapped = methodArgument <= DescriptionOnly;
    return {isWrapped ? methodArgument : methodArgument - DescriptionOnly, isWrapped, settings};
}

bool hasNeededSettings(const PacketRequest& request) {
    return findMethod(request.method) == nullptr || request.settings != nullptr;
}

std::size_t writeValue(const Parameter& parameter, const float* settings, char* out) {
    TextSink sink(out);
    putValue(sink, parameter, settings);
    return sink.size();
}

std::size_t writePacket(const PacketRequest& request, char* out) {
    TextSink sink(out);
    if (request.isWrapped) {
        sink.put(PacketOpening);
    }
    if (request.lens) {
        sink.put(LensOpening, *request.lens, LensClosing, DescriptionClosing);
    }
    if (request.method > 0) {
        putDescription(sink, request);
    }
    if (request.isWrapped) {
        sink.put(PacketClosing);
    }
    return sink.size();
}

} // namespace tvmeta

using namespace tvmeta;

std::int32_t embed_xmp(std::int32_t pass, std::int32_t method, const float* settings, std::int32_t lensLength,
                       const char* lens, char* out) noexcept {
    // The rest of a packet is far smaller than what this leaves of 32 bits.
    constexpr std::size_t MaxLens = INT32_MAX - 65'536;
    const bool isMeasuring = pass == 0;
    if ((lensLength > 0 && lens == nullptr) || (!isMeasuring && out == nullptr)) {
        return EMBED_XMP_NOTHING;
    }
    PacketRequest request = packetRequest(method, settings);
    request.namespaceNumber = std::max(pass, 1);
    if (lensLength > 0) {
        request.lens = lens;
    }
    if (!hasNeededSettings(request) || (request.lens && request.lens->size() > MaxLens)) {
        return EMBED_XMP_NOTHING;
    }
    return static_cast<std::int32_t>(writePacket(request, isMeasuring ? nullptr : out));
}
