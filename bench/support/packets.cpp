#include "support/packets.h"

namespace bench {

namespace {

constexpr Property Properties[] = {
    {"Strength", DETAILS_ENHANCER_STRENGTH, Form::Number, "75.0"},
    {"ColorSaturation", DETAILS_ENHANCER_COLOR_SATURATION, Form::Number, "46.0"},
    {"Luminosity", DETAILS_ENHANCER_LUMINOSITY, Form::Number, "-2.5"},
    {"WhiteClip", DETAILS_ENHANCER_WHITE_CLIP, Form::Fraction, "0.250000"},
    {"BlackClip", DETAILS_ENHANCER_BLACK_CLIP, Form::Fraction, "0.015625"},
    {"SmoothingMode", DETAILS_ENHANCER_SMOOTHING_MODE, Form::Mode, "Slider"},
    {"Smoothing", DETAILS_ENHANCER_SMOOTHING_SLIDER, Form::Number, "12.5"},
    {"Microcontrast", DETAILS_ENHANCER_MICROCONTRAST, Form::Number, "3.5"},
    {"Microsmoothing", DETAILS_ENHANCER_MICROSMOOTHING, Form::Number, "2.0"},
    {"Gamma", DETAILS_ENHANCER_GAMMA, Form::Gamma, "1.25"},
    {"HighlightsSmoothing", DETAILS_ENHANCER_HIGHLIGHTS_SMOOTHING, Form::Number, "10.0"},
    {"ShadowsSmoothing", DETAILS_ENHANCER_SHADOWS_SMOOTHING, Form::Number, "15.0"},
    {"ShadowsClipping", DETAILS_ENHANCER_SHADOWS_CLIPPING, Form::Number, "5.0"},
    {"ColorTemperature", DETAILS_ENHANCER_COLOR_TEMPERATURE, Form::Number, "-1.5"},
    {"SaturationHighlights", DETAILS_ENHANCER_SATURATION_HIGHLIGHTS, Form::Number, "1.0"},
    {"SaturationShadows", DETAILS_ENHANCER_SATURATION_SHADOWS, Form::Number, "-4.0"},
    {"IsPano360", DETAILS_ENHANCER_IS_PANO_360, Form::YesNo, "Yes"},
};

constexpr std::string_view Opening =
    "<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?>\n"
    "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n"
    "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n"
    "<rdf:Description rdf:about=''\nxmlns:tiff='http://ns.adobe.com/tiff/1.0/'\n"
    "xmlns:xmp='http://ns.adobe.com/xap/1.0/'\nxmlns:dc='http://purl.org/dc/elements/1.1/'>\n"
    "<tiff:Make>Exemplar</tiff:Make>\n<tiff:Model>Exemplar E-20 Mark II</tiff:Model>\n"
    "<xmp:CreatorTool>Editor 12.1</xmp:CreatorTool>\n<xmp:CreateDate>2024-05-17T18:42:07+02:00</xmp:CreateDate>\n"
    "<xmp:Rating>4</xmp:Rating>\n<dc:format>image/jpeg</dc:format>\n"
    "<dc:subject><rdf:Bag><rdf:li>evening</rdf:li><rdf:li>harbour</rdf:li></rdf:Bag></dc:subject>\n"
    "</rdf:Description>\n\n"
    "<rdf:Description rdf:about=''\nxmlns:xmpMM='http://ns.adobe.com/xap/1.0/mm/'\n"
    "xmlns:stEvt='http://ns.adobe.com/xap/1.0/sType/ResourceEvent#'>\n<xmpMM:History>\n<rdf:Seq>\n";
constexpr std::string_view HistoryClosing = "</rdf:Seq>\n</xmpMM:History>\n</rdf:Description>\n\n";
constexpr std::string_view Closing = "</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end='w'?>";

Bytes identifier(Random& random) {
    constexpr std::string_view Digits = "0123456789abcdef";
    Bytes text = "xmp.iid:";
    for (const char shape : std::string_view("xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx")) {
        text += shape == '-' ? '-' : Digits[random() % Digits.size()];
    }
    return text;
}

Bytes historyEvent(Random& random) {
    return "<rdf:li stEvt:action=\"saved\" stEvt:instanceID=\"" + identifier(random) +
           "\" stEvt:when=\"2024-05-18T09:12:44+02:00\" stEvt:softwareAgent=\"Editor 12.1\" "
           "stEvt:changed=\"/metadata\"/>\n";
}

Bytes lensDescription() {
    return "<rdf:Description rdf:about=''\nxmlns:aux='http://ns.adobe.com/exif/1.0/aux/'>\n<aux:Lens>" +
           Bytes(LensName) + "</aux:Lens>\n</rdf:Description>\n\n";
}

Bytes settingsDescription() {
    return "<rdf:Description rdf:about=''\nxmlns:tvtm='" + Bytes(Namespace) +
           "01'>\n<tvtm:Version>5.0</tvtm:Version>\n<tvtm:Method>" + Bytes(SettingsMethodName) + "</tvtm:Method>\n" +
           propertyLines() + "</rdf:Description>\n\n";
}

} // namespace

std::span<const Property> properties() {
    return Properties;
}

Bytes propertyLines() {
    Bytes lines;
    for (const Property& property : Properties) {
        const Bytes tag = "tvtm:" + Bytes(property.name);
        lines += "<" + tag + ">" + Bytes(property.text) + "</" + tag + ">\n";
    }
    return lines;
}

Settings packetSettings() {
    Settings settings = {};
    for (const Property& property : Properties) {
        readValue(property, property.text, settings);
    }
    return settings;
}

Bytes settingsPacket(std::size_t size) {
    Random random;
    const Bytes ending = Bytes(HistoryClosing) + lensDescription() + settingsDescription() + Bytes(Closing);
    Bytes packet(Opening);
    for (Bytes event = historyEvent(random); packet.size() + event.size() + ending.size() <= size;
         event = historyEvent(random)) {
        packet += event;
    }
    packet.append(size - packet.size() - ending.size(), ' ');
    return packet + ending;
}

} // namespace bench
