// Writes a settings packet (ISO 16684-1, serialisation in RDF). The text is described once; a sink measures or stores
// it.
#include "settings/packet_writer.h"

#include "settings/methods.h"
#include "settings/value_curves.h"
#include "settings/xmp_names.h"
#include "support/bytes.h"
#include "support/text_numbers.h"
#include "tvmeta.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

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

// Takes the pieces of the text: stores them one behind the other, or only counts them when it has nowhere to.
class TextSink {
  public:
    explicit TextSink(char* out) noexcept : out_(out) {}

    template <typename... Texts>
    void put(Texts... texts) noexcept {
        (append(texts), ...);
    }

    std::size_t size() const noexcept { return size_; }

  private:
    void append(std::string_view text) noexcept {
        if (out_ != nullptr) {
            copyBytes(out_ + size_, text.data(), text.size());
        }
        size_ += text.size();
    }

    char* out_;
    std::size_t size_ = 0;
};

// "%02d" of a number above zero.
void putNamespaceNumber(TextSink& sink, std::int32_t number) noexcept {
    char buffer[10];
    char* digits = std::end(buffer);
    for (int place = 0; place < 2 || number > 0; ++place) {
        *--digits = static_cast<char>('0' + number % 10);
        number /= 10;
    }
    sink.put(std::string_view(digits, static_cast<std::size_t>(std::end(buffer) - digits)));
}

bool smoothsBySlider(const float* settings) noexcept {
    // By its whole part: 1.9 is 1. (A comparison, since a float need not fit an integer.)
    return settings[SmoothingModeSlot] >= 1.0F && settings[SmoothingModeSlot] < 2.0F;
}

const Word& smoothingLevel(float level) noexcept {
    constexpr float Last = static_cast<float>(std::size(SmoothingLevels) - 1);
    return SmoothingLevels[level > 0.0F ? static_cast<std::size_t>(std::min(level, Last)) : 0]; // NaN gives 0
}

void putNumber(TextSink& sink, float value, int decimals) noexcept {
    char buffer[PrintedFloatSize];
    sink.put(printFixed(buffer, value, decimals));
}

void putSmoothing(TextSink& sink, const float* settings) noexcept {
    if (smoothsBySlider(settings)) {
        putNumber(sink, settings[SmoothingSliderSlot], 1);
        return;
    }
    constexpr std::string_view Blanks = "        ";
    static_assert(Blanks.size() == SmoothingLevelWidth);
    const std::string_view word = smoothingLevel(settings[SmoothingLevelSlot]).text;
    sink.put(word, textFrom(Blanks, word.size()));
}

void putValue(TextSink& sink, const Parameter& parameter, const float* settings) noexcept {
    const float slot = settings[parameter.slot];
    switch (parameter.kind) {
    case ValueKind::Number:
    case ValueKind::VersionedNumber:
    case ValueKind::Microcontrast:
        putNumber(sink, slot, 1);
        break;
    case ValueKind::Fraction:
        putNumber(sink, slot, 6);
        break;
    case ValueKind::Gamma:
        putNumber(sink, gammaFromSlider(slot), 2);
        break;
    case ValueKind::Clip:
        putNumber(sink, clipFromSlot(slot), 3);
        break;
    case ValueKind::SmoothingMode:
        sink.put(SmoothingModes[smoothsBySlider(settings) ? 1 : 0].text);
        break;
    case ValueKind::Smoothing:
        putSmoothing(sink, settings);
        break;
    case ValueKind::Panorama:
        sink.put(slot > 0.0F ? "Yes" : "No ");
        break;
    }
}

void putSettings(TextSink& sink, const PacketRequest& request, std::int32_t code) noexcept {
    sink.put(SettingsOpening);
    putNamespaceNumber(sink, request.namespaceNumber);
    sink.put(SettingsVersion);
    if (const Method* const method = findMethod(code)) {
        sink.put("<tvtm:Method>", method->name, "</tvtm:Method>\n");
        for (const Parameter& parameter : method->parameters) {
            sink.put("<tvtm:", parameter.name, ">");
            putValue(sink, parameter, request.settings);
            sink.put("</tvtm:", parameter.name, ">\n");
        }
    }
    sink.put(DescriptionClosing);
}

bool isWrapped(const PacketRequest& request) noexcept {
    return request.method <= DescriptionOnly;
}

std::int32_t effectiveMethod(const PacketRequest& request) noexcept {
    return isWrapped(request) ? request.method : request.method - DescriptionOnly;
}

void putPacket(TextSink& sink, const PacketRequest& request) noexcept {
    if (isWrapped(request)) {
        sink.put(PacketOpening);
    }
    if (request.lens.data() != nullptr) {
        sink.put(LensOpening, request.lens, LensClosing, DescriptionClosing);
    }
    if (effectiveMethod(request) > 0) {
        putSettings(sink, request, effectiveMethod(request));
    }
    if (isWrapped(request)) {
        sink.put(PacketClosing);
    }
}

} // namespace

bool isComplete(const PacketRequest& request) noexcept {
    return findMethod(effectiveMethod(request)) == nullptr || request.settings != nullptr;
}

std::size_t measurePacket(const PacketRequest& request) noexcept {
    TextSink sink(nullptr);
    putPacket(sink, request);
    return sink.size();
}

std::size_t writePacket(const PacketRequest& request, char* out) noexcept {
    TextSink sink(out);
    putPacket(sink, request);
    return sink.size();
}

} // namespace tvmeta

std::int32_t embed_xmp(std::int32_t pass, std::int32_t method, const float* settings, std::int32_t lensLength,
                       const char* lens, char* out) noexcept {
    using namespace tvmeta;
    // Everything but the lens name is far smaller than what this leaves of 32 bits.
    constexpr std::size_t LongestLens = std::numeric_limits<std::int32_t>::max() - 65'536;
    const bool measuring = pass == 0;
    if ((lensLength > 0 && lens == nullptr) || (!measuring && out == nullptr)) {
        return 0;
    }
    const std::string_view lensText = lensLength > 0 ? std::string_view(lens) : std::string_view();
    const PacketRequest request{method, settings, lensText, std::max(pass, 1)};
    if (!isComplete(request) || lensText.size() > LongestLens) {
        return 0;
    }
    return static_cast<std::int32_t>(measuring ? measurePacket(request) : writePacket(request, out));
}
