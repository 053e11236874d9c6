// Prints the generated parts of docs/packet-format.md from the tables and the writer:
//
//   packet_tables packet             an example of a packet
//   packet_tables methods tvmeta.h   the parameters of each method, with the names that the header gives their slots
#include "settings/methods.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

using namespace tvmeta;

namespace {

// In the order of ValueKind.
constexpr std::string_view KindNames[] = {
    "number",        "versioned number", "fraction",  "gamma",    "clip",
    "microcontrast", "smoothing mode",   "smoothing", "panorama",
};

std::string packetOf(std::int32_t method, const float* settings, const std::string& lens) {
    const auto lensLength = static_cast<std::int32_t>(lens.size());
    std::string packet;
    packet.resize(static_cast<std::size_t>(embed_xmp(0, method, settings, lensLength, lens.c_str(), nullptr)));
    embed_xmp(1, method, settings, lensLength, lens.c_str(), packet.data());
    return packet;
}

// The written value of a parameter when every slot has the same value.
std::string writtenFor(const Method& method, const Parameter& parameter, float value) {
    SettingsValues settings;
    std::fill(std::begin(settings), std::end(settings), value);
    const std::string packet = packetOf(method.code, settings, "");
    const std::string tag = "<tvtm:" + std::string(parameter.name) + ">";
    const std::size_t start = packet.find(tag) + tag.size();
    return packet.substr(start, packet.find('<', start) - start);
}

// The name of the constant with this prefix and number in the header.
std::string nameIn(const std::string& header, const std::string& prefix, int number) {
    const std::string value = " = " + std::to_string(number);
    for (std::size_t at = header.find(" " + prefix); at != std::string::npos; at = header.find(" " + prefix, at + 1)) {
        const std::size_t name = at + 1 + prefix.size();
        const std::size_t end = header.find(' ', name);
        const std::size_t next = end + value.size();
        if (header.compare(end, value.size(), value) == 0 && !std::isdigit(static_cast<unsigned char>(header[next]))) {
            return header.substr(name, end - name);
        }
    }
    return "?";
}

void printMethod(const Method& method, const std::string& header) {
    const std::string constant = nameIn(header, "METHOD_", method.code);
    std::cout << "\n### " << method.name << "\n\n`METHOD_" << constant << "`, code " << method.code;
    if (!method.formerName.empty()) {
        std::cout << "; former name " << method.formerName;
    }
    std::cout << ".\n\n| tag | slot | constant | kind | all slots 0 | all slots 1 |\n|---|---|---|---|---|---|\n";
    for (const Parameter& parameter : method.parameters) {
        std::cout << "| `tvtm:" << parameter.name << "`";
        if (!parameter.formerName.empty()) {
            std::cout << ", formerly `tvtm:" << parameter.formerName << "`";
        }
        std::cout << " | " << parameter.slot << " | `" << constant << "_"
                  << nameIn(header, constant + "_", parameter.slot) << "` | "
                  << KindNames[static_cast<std::size_t>(parameter.kind)] << " | `"
                  << writtenFor(method, parameter, 0.0F) << "` | `" << writtenFor(method, parameter, 1.0F) << "` |\n";
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        SettingsValues settings = {};
        settings[FUSION_INTENSIVE_STRENGTH] = 5.0F;
        std::cout << packetOf(METHOD_FUSION_INTENSIVE, settings, "TV 16-50mm f/2.8-4");
        return 0;
    }
    std::ifstream file(argv[2]);
    const std::string header(std::istreambuf_iterator<char>(file), {});
    for (const Method& method : methods()) {
        printMethod(method, header);
    }
    return 0;
}
