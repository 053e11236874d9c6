#include "writers/result_xmp.h"

#include "photo/iptc_text.h"
#include "photo/utf8.h"
#include "photo/xmp_text.h"
#include "settings/packet_parser.h"
#include "support/text_numbers.h"
#include "support/text_search.h"
#include "support/tiff_vocabulary.h"
#include "writers/result_iptc.h"
#include "writers/text_edits.h"

#include <algorithm>
#include <array>

namespace tvmeta {

namespace {

constexpr std::string_view RdfEnd = "</rdf:RDF>"; // before the last one, descriptions can be added
constexpr std::string_view DescriptionEnd = "</rdf:Description>";
constexpr std::string_view OwnSettings = "<rdf:Description rdf:about=''\nxmlns:tvtm=";
constexpr std::string_view NewPacketStart = "<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?>\n"
                                            "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n"
                                            "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n";
constexpr std::string_view NewPacketEnd = "</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end='w'?>\n";
constexpr std::string_view SubjectStart = "<rdf:Description rdf:about=''\n"
                                          "xmlns:dc='http://purl.org/dc/elements/1.1/'>\n<dc:subject>\n<rdf:Bag>\n";
constexpr std::string_view SubjectEnd = "</rdf:Bag>\n</dc:subject>\n</rdf:Description>\n\n";

void putEscaped(TextWriter& writer, std::string_view text) {
    for (; !text.empty(); text.remove_prefix(1)) {
        const std::size_t special = text.find_first_of("&<>");
        writer.put(std::string_view(text.data(), std::min(special, text.size())));
        if (special == NotFound) {
            return;
        }
        writer.put(text[special] == '&' ? "&amp;" : text[special] == '<' ? "&lt;" : "&gt;");
        text.remove_prefix(special);
    }
}

// Passes over the items of the property once, whatever their number.
bool hasKeyword(std::string_view packet, std::string_view keyword) {
    constexpr std::string_view Item = "<rdf:li";
    constexpr std::string_view ItemEnd = "</rdf:li>";
    std::string_view items = textFrom(packet, packet.find("<dc:subject"));
    items = {items.data(), std::min(items.find("</dc:subject>"), items.size())};
    for (std::size_t end = items.find(ItemEnd); end != NotFound; end = items.find(ItemEnd)) {
        char value[256];
        TextWriter writer(value);
        const std::string_view upToEnd(items.data(), end + ItemEnd.size());
        if (findProperty(textFrom(upToEnd, upToEnd.rfind(Item)), "rdf:li", writer, 0) &&
            writer.size() == writer.written() && std::string_view(value, writer.written()) == keyword) {
            return true;
        }
        items.remove_prefix(upToEnd.size());
    }
    return false;
}

void putKeyword(TextWriter& writer, std::string_view keyword) {
    writer.put("<rdf:li>");
    putEscaped(writer, keyword);
    writer.put("</rdf:li>\n");
}

// The keywords that the packet lacks. XMP takes precedence over IPTC: the first keywords of a packet come with those of
// the IPTC block, which readers would not show any more; IPTC-IIM allows 64 bytes, and much longer ones stay there
// alone.
void putKeywords(TextWriter& writer, std::string_view packet, const XmpChanges& changes) {
    const bool isFirst = !changes.keywords.empty() && packet.find("dc:subject") == NotFound;
    IptcReader block(isFirst ? changes.iptc : std::span<const unsigned char>());
    for (IptcDataset dataset; block.next(dataset);) {
        char value[1024];
        TextWriter text(value);
        putText(text, trimmed(asText(dataset.value)));
        const std::string_view keyword(value, text.written());
        const bool isGiven =
            std::ranges::any_of(changes.keywords, [keyword](std::string_view given) { return given == keyword; });
        const bool isWhole = !keyword.empty() && keyword.size() == text.size();
        if (dataset.record == 2 && dataset.number == iptc_dataset::Keyword && isWhole && !isGiven) {
            putKeyword(writer, keyword);
        }
    }
    for (std::size_t i = 0; i < changes.keywords.size(); ++i) {
        if (!hasKeyword(packet, changes.keywords[i]) && isNew(changes.keywords, i)) {
            putKeyword(writer, changes.keywords[i]);
        }
    }
}

// The same in a buffer. Measured first, like every layout.
ZeroedBuffer makeKeywords(std::string_view packet, const XmpChanges& changes) {
    TextWriter measure({});
    putKeywords(measure, packet, changes);
    ZeroedBuffer buffer(measure.size());
    TextWriter writer({buffer.text(), buffer.size()});
    putKeywords(writer, packet, changes);
    return buffer;
}

struct Property {
    std::string_view name;
    std::int32_t tag; // for the list of losses
    PrintedInteger value;
};

// The value of a property in a simple form, as an attribute or an element; empty in another form.
std::string_view simpleValue(std::string_view packet, std::size_t afterName) {
    const std::string_view rest = textFrom(packet, afterName);
    const bool isElement = rest.starts_with('>');
    const bool isAttribute = rest.starts_with("=\"") || rest.starts_with("='");
    const std::size_t start = isElement ? 1 : 2;
    if (!isElement && !isAttribute) {
        return {};
    }
    const std::string_view value = textFrom(rest, start);
    const std::size_t end = value.find(isElement ? '<' : rest[1]);
    const bool isNumber = end != NotFound && end > 0 && value.find_first_not_of("0123456789") == end;
    return isNumber ? std::string_view(value.data(), end) : std::string_view();
}

// Corrects a property that the packet has once. Of several nobody can say which one is the picture's own.
void correct(std::string_view packet, const Property& property, TextEdits& edits, LossList& losses) {
    std::size_t place = NotFound;
    int count = 0;
    for (std::size_t at = packet.find(property.name); at != NotFound; at = packet.find(property.name, at + 1)) {
        const bool isName = at > 0 && (packet[at - 1] == '<' || packet[at - 1] == ' ' || packet[at - 1] == '\n' ||
                                       packet[at - 1] == '\t' || packet[at - 1] == '\r');
        place = isName ? at + property.name.size() : place;
        count += isName ? 1 : 0;
    }
    if (count == 0) {
        return;
    }
    const std::string_view value = simpleValue(packet, place);
    if (count > 1 || value.empty()) {
        losses.addBlock(TVMETA_XMP, TVMETA_LOSS_XMP_LEFT, property.tag);
        return;
    }
    const auto begin = static_cast<std::size_t>(value.data() - packet.data());
    edits.replace(begin, begin + value.size(), property.value.text());
}

// Where keywords can be added to the packet's own: before the end of the only bag. NotFound if it has none.
std::size_t subjectPlace(std::string_view packet, bool& isCertain) {
    constexpr std::string_view Name = "dc:subject";
    constexpr std::string_view BagEnd = "</rdf:Bag>";
    const std::size_t at = packet.find("<dc:subject");
    isCertain = packet.find(Name) == NotFound;
    if (at == NotFound) {
        return NotFound;
    }
    const std::size_t end = packet.find("</dc:subject>", at);
    const std::size_t bag = packet.find(BagEnd, at);
    isCertain = end != NotFound && bag != NotFound && bag < end && packet.find("<dc:subject", at + 1) == NotFound;
    return isCertain ? bag : NotFound;
}

ZeroedBuffer newPacket(std::string_view settings, std::string_view keywords) {
    TextEdits edits("");
    if (!settings.empty() || !keywords.empty()) {
        edits.insert(0, NewPacketStart);
        edits.insert(0, settings);
        edits.insert(0, keywords.empty() ? "" : SubjectStart);
        edits.insert(0, keywords);
        edits.insert(0, keywords.empty() ? "" : SubjectEnd);
        edits.insert(0, NewPacketEnd);
    }
    return edits.apply();
}

// The packet without the settings that this library wrote, which new ones replace.
ZeroedBuffer withoutOwnSettings(std::string_view packet) {
    TextEdits edits(packet);
    const std::size_t begin = packet.find(OwnSettings);
    const std::size_t end = begin == NotFound ? NotFound : packet.find(DescriptionEnd, begin);
    if (end != NotFound) {
        edits.replace(begin, end + DescriptionEnd.size(), "");
    }
    return edits.apply();
}

// Makes room for the new settings. A packet is lost if readers could use settings in another form instead of the new
// ones, or if it has no place for them. Returns false without memory.
bool makeRoom(std::string_view& packet, ZeroedBuffer& buffer, LossList& losses) {
    buffer = withoutOwnSettings(packet);
    packet = {buffer.text(), buffer.size()};
    if (buffer && (hasSettings(packet) || packet.rfind(RdfEnd) == NotFound)) {
        losses.addBlock(TVMETA_XMP, TVMETA_LOSS_BLOCK);
        packet = {};
    }
    return static_cast<bool>(buffer);
}

// What a packet says of its picture.
std::array<Property, 5> pictureProperties(const XmpChanges& changes) {
    return {{{"tiff:ImageWidth", tiff_tag::ImageWidth, PrintedInteger(changes.width)},
             {"tiff:ImageLength", tiff_tag::ImageLength, PrintedInteger(changes.height)},
             {"tiff:Orientation", tiff_tag::Orientation, PrintedInteger(changes.orientation)},
             {"exif:PixelXDimension", exif_tag::PixelXDimension, PrintedInteger(changes.width)},
             {"exif:PixelYDimension", exif_tag::PixelYDimension, PrintedInteger(changes.height)}}};
}

void addKeywords(std::string_view packet, std::string_view keywords, TextEdits& edits, LossList& losses) {
    bool isCertain = false;
    const std::size_t bag = subjectPlace(packet, isCertain);
    const std::size_t place = packet.rfind(RdfEnd);
    if (!isCertain || (bag == NotFound && place == NotFound)) {
        losses.addBlock(TVMETA_XMP, TVMETA_LOSS_XMP_LEFT);
    } else if (bag != NotFound) {
        edits.insert(bag, keywords);
    } else {
        edits.insert(place, SubjectStart);
        edits.insert(place, keywords);
        edits.insert(place, SubjectEnd);
    }
}

} // namespace

ZeroedBuffer resultXmp(std::string_view packet, const XmpChanges& changes, LossList& losses) {
    const bool hasMethod = changes.settings.method > 0;
    ZeroedBuffer settingsBuffer(hasMethod ? writePacket(changes.settings, nullptr) : 0);
    ZeroedBuffer packetBuffer;
    if (!settingsBuffer || (hasMethod && !packet.empty() && !makeRoom(packet, packetBuffer, losses))) {
        return {};
    }
    const std::string_view settings(settingsBuffer.text(),
                                    hasMethod ? writePacket(changes.settings, settingsBuffer.text()) : 0);
    ZeroedBuffer keywordsBuffer = makeKeywords(packet, changes);
    if (!keywordsBuffer) {
        return {};
    }
    const std::string_view keywords(keywordsBuffer.text(), keywordsBuffer.size());
    if (packet.empty()) {
        return newPacket(settings, keywords);
    }
    TextEdits edits(packet);
    const std::array properties = pictureProperties(changes); // borrowed by the edits
    for (const Property& property : properties) {
        if (changes.isPhotographs) {
            correct(packet, property, edits, losses);
        }
    }
    if (hasMethod) {
        edits.insert(packet.rfind(RdfEnd), settings);
    }
    if (!keywords.empty()) {
        addKeywords(packet, keywords, edits, losses);
    }
    return edits.apply();
}

} // namespace tvmeta
