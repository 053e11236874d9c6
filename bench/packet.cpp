// Settings written as an XMP packet.
#include "support/jobs.h"
#include "support/packets.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

namespace bench {

namespace {

using PacketBuffer = std::array<char, 4096>;

constexpr std::string_view WrittenOpening = "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n"
                                            "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n"
                                            "<rdf:Description rdf:about=''\nxmlns:tvtm='";
constexpr std::string_view WrittenHead = "01'>\n<tvtm:Version>5.0</tvtm:Version>\n<tvtm:Method>";
constexpr std::string_view WrittenClosing = "</rdf:Description>\n\n</rdf:RDF>\n</x:xmpmeta>\n";

int decimalsOf(Form form) {
    switch (form) {
    case Form::Fraction:
        return 6;
    case Form::Gamma:
        return 2;
    default:
        return 1;
    }
}

std::string_view wordOf(Form form, float slot) {
    return form == Form::Mode ? (slot > 0 ? "Slider" : "Light") : (slot > 0 ? "Yes" : "No ");
}

bool isWord(Form form) {
    return form == Form::Mode || form == Form::YesNo;
}

double numberOf(Form form, float slot) {
    return form == Form::Gamma ? std::exp2((50.0 - static_cast<double>(slot)) / 50.0) : static_cast<double>(slot);
}

// A loop over the lines with std::to_chars.
class ToCharsWriter {
  public:
    explicit ToCharsWriter(PacketBuffer& buffer) : begin_(buffer.data()), out_(begin_), end_(begin_ + buffer.size()) {}

    std::string_view write(const Settings& settings) {
        put(WrittenOpening, Namespace, WrittenHead, SettingsMethodName, "</tvtm:Method>\n");
        for (const Property& property : properties()) {
            put("<tvtm:", property.name, ">");
            putValue(property.form, settings[static_cast<std::size_t>(property.slot)]);
            put("</tvtm:", property.name, ">\n");
        }
        put(WrittenClosing);
        return {begin_, static_cast<std::size_t>(out_ - begin_)};
    }

  private:
    template <typename... Texts>
    void put(Texts... texts) {
        (append(texts), ...);
    }

    void append(std::string_view text) {
        std::memcpy(out_, text.data(), text.size());
        out_ += text.size();
    }

    void putValue(Form form, float slot) {
        if (isWord(form)) {
            put(wordOf(form, slot));
        } else {
            out_ = std::to_chars(out_, end_, numberOf(form, slot), std::chars_format::fixed, decimalsOf(form)).ptr;
        }
    }

    char* begin_;
    char* out_;
    char* end_;
};

std::string_view writeByToChars(const Settings& settings, PacketBuffer& buffer) {
    return ToCharsWriter(buffer).write(settings);
}

// A loop over the lines with snprintf.
std::string_view writeBySnprintf(const Settings& settings, PacketBuffer& buffer) {
    std::size_t size = 0;
    const auto print = [&](const char* format, auto... values) {
        const int count = std::snprintf(buffer.data() + size, buffer.size() - size, format, values...);
        size += static_cast<std::size_t>(count);
    };
    print("%s%s%s%s</tvtm:Method>\n", WrittenOpening.data(), Namespace.data(), WrittenHead.data(),
          SettingsMethodName.data());
    for (const Property& property : properties()) {
        const float slot = settings[static_cast<std::size_t>(property.slot)];
        const char* const name = property.name.data();
        if (isWord(property.form)) {
            print("<tvtm:%s>%s</tvtm:%s>\n", name, wordOf(property.form, slot).data(), name);
        } else {
            print("<tvtm:%s>%.*f</tvtm:%s>\n", name, decimalsOf(property.form), numberOf(property.form, slot), name);
        }
    }
    print("%s", WrittenClosing.data());
    return {buffer.data(), size};
}

std::string_view writeByTvmeta(const Settings& settings, PacketBuffer& buffer) {
    const std::int32_t size = embed_xmp(1, SettingsMethodCode, settings.data(), 0, nullptr, buffer.data());
    return {buffer.data(), static_cast<std::size_t>(size)};
}

// Every writer must produce the texts from which the settings were read.
Bytes expectedPacket() {
    return Bytes(WrittenOpening) + Bytes(Namespace) + Bytes(WrittenHead) + Bytes(SettingsMethodName) +
           "</tvtm:Method>\n" + propertyLines() + Bytes(WrittenClosing);
}

void addWriters(Contenders& contenders) {
    const Settings settings = packetSettings();
    const auto buffer = std::make_shared<PacketBuffer>();
    const auto isRight = [&](std::string_view packet) {
        const bool right = packet == expectedPacket();
        buffer->fill('\0'); // so that the next writer cannot pass with this text
        return right;
    };
    contenders.add(
        "tvmeta", [settings, buffer] { return writeByTvmeta(settings, *buffer); }, isRight);
    contenders.add(
        "std::to_chars", [settings, buffer] { return writeByToChars(settings, *buffer); }, isRight);
    contenders.add(
        "snprintf", [settings, buffer] { return writeBySnprintf(settings, *buffer); }, isRight);
}

} // namespace

void addPacketJobs(Jobs& jobs) {
    jobs.push_back({"write a packet", addWriters});
}

} // namespace bench
