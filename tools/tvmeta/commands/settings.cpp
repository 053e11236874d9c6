// tvmeta settings: packets of processing settings in files.

#include "settings/settings.h"
#include "base/failure.h"
#include "base/text.h"
#include "commands/command_line.h"
#include "commands/settings_options.h"
#include "output/output_file.h"
#include "photographs/photo.h"

#include <cerrno>
#include <iomanip>
#include <iostream>
#include <memory>
#include <new>
#include <string>

namespace {

// The packet of a photograph or result, or the text of a settings file.
std::string packetIn(const std::string& path) {
    const OpenPhoto file(path);
    return std::string(asText(file.isPhotograph() ? file.block(TVMETA_XMP) : readFile(path)));
}

void showSettings(const std::string& path) {
    const std::string packet = packetIn(path);
    const int32_t method = get_settings_from_xmp(METHOD_DETECT, textSize(packet), packet.c_str(), nullptr, nullptr);
    if (method <= 0) {
        throw Failure(path, explain(method, {{XMP_NO_SETTINGS, "no settings, or settings of an unknown method"},
                                             {XMP_OTHER_METHOD, "the settings have no version or no method"}}));
    }
    for (const Setting& setting : settingsInPacket(method, packet)) {
        std::cout << std::left << std::setw(22) << setting.name << printable(setting.value) << "\n";
    }
}

void writeSettings(const Output& file, const Settings& settings) {
    const std::string& path = file.path;
    writeOutput(file, {}, [&](OutputFile& output) {
        const std::string libraryPath = output.libraryPath();
        errno = 0;
        const int32_t result = write_xmp(libraryPath.c_str(), settings.method, settings.values.data());
        if (result != WRITE_XMP_OK) {
            throw Failure(path, explain(result, {{WRITE_XMP_CANNOT_OPEN, systemReason()},
                                                 {WRITE_XMP_FAILED, systemReason()},
                                                 {WRITE_XMP_NO_MEMORY, "not enough memory"}}));
        }
    });
    messagesFor(path) << "wrote " << printable(path) << "\n";
}

std::string inserted(const std::string& path, const Settings& settings) {
    if (isPhotograph(path)) {
        throw Failure(path, "expected an XMP packet in a separate file, found a photograph, in which a packet cannot "
                            "grow");
    }
    std::string packet(asText(readFile(path)));
    const int32_t result = insertDescription(packet, settings);
    if (result == INSERT_XMP_NOTHING_FOLLOWS) {
        throw Failure(path, "the packet ends right after its RDF opening");
    }
    if (result == INSERT_XMP_NO_MEMORY) {
        throw std::bad_alloc();
    }
    if (result < 0) {
        throw Failure(path, "expected an XMP packet with x:xmpmeta and rdf:RDF elements in the usual form; " +
                                beginning(readStart(path, 4)));
    }
    return packet;
}

void insertSettings(const std::string& path, const Settings& settings, const Output& file) {
    std::string packet;
    writeOutput(file, {path}, [&](OutputFile& output) {
        packet = inserted(path, settings);
        output.write(packet);
    });
    std::ostream& messages = messagesFor(file.path);
    messages << "wrote " << printable(file.path) << "\n";
    if (tvsettings_occurences_in_xmp(textSize(packet), packet.c_str()) > 1) {
        messages << "the packet contained settings; the new ones come first and take effect\n";
    }
}

struct Options {
    std::string file;
    Output output;
    SettingsOptions settings;
};

} // namespace

Command settingsCommand() {
    const auto options = std::make_shared<Options>();
    Command show = {
        .name = "show",
        .purpose = "Show the settings in a photograph or settings file",
        .options = {Option({"FILE"}, &options->file, "", "File with a settings packet", {.isRequired = true})},
        .footer = "Example:\n"
                  "  tvmeta settings show result.tif",
        .run = [options] { showSettings(options->file); },
    };
    Command write = {
        .name = "write",
        .purpose = "Write a settings file",
        .options = {Option({"OUT"}, &options->output.path, "", "Settings file to write", {.isRequired = true})},
        .footer = methodHelp() + "Example:\n"
                                 "  tvmeta settings write my.xmp --method 'Details Enhancer' \\\n"
                                 "    --set Strength=70 --set Gamma=1.20",
        .run = [options] { writeSettings(options->output, options->settings.settings()); },
    };
    Command insert = {
        .name = "insert",
        .purpose = "Insert settings into an XMP packet",
        .options =
            {
                Option({"PACKET"}, &options->file, "", "File with an XMP packet", {.isRequired = true}),
                Option({"-o", "--output"}, &options->output.path, "FILE", "File to write", {.isRequired = true}),
            },
        .footer = methodHelp() + "Example:\n"
                                 "  tvmeta settings insert packet.xmp -o new.xmp \\\n"
                                 "    --method Fusion/Intensive --set Radius=70",
        .run = [options] { insertSettings(options->file, options->settings.settings(), options->output); },
    };
    for (Command* const command : {&write, &insert}) {
        addSettingsOptions(command->options, options->settings, true);
        command->options.push_back(forceOption(options->output.force));
    }
    return {
        .name = "settings",
        .purpose = "Show, write or insert processing settings",
        .footer = "Each has its own help: tvmeta settings show --help.",
        .commands = {show, write, insert},
    };
}
