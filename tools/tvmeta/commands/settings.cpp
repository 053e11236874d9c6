// tvmeta settings: packets of processing settings in files.

#include "commands/commands.h"
#include "commands/settings_options.h"
#include "output/failure.h"
#include "output/output_file.h"
#include "output/text.h"
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
    return findFileType(path) ? readPacket(readPhoto(path)) : std::string(asText(readFile(path)));
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

void writeSettings(const std::string& path, const Settings& settings) {
    writeOutput(path, {}, [&](OutputFile& output) {
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
    if (findFileType(path)) {
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

void insertSettings(const std::string& path, const Settings& settings, const std::string& outputPath) {
    std::string packet;
    writeOutput(outputPath, {path}, [&](OutputFile& output) {
        packet = inserted(path, settings);
        output.write(packet);
    });
    std::ostream& messages = messagesFor(outputPath);
    messages << "wrote " << printable(outputPath) << "\n";
    if (tvsettings_occurences_in_xmp(textSize(packet), packet.c_str()) > 1) {
        messages << "the packet contained settings; the new ones come first and take effect\n";
    }
}

struct Options {
    std::string file;
    std::string output;
    SettingsOptions settings;
};

} // namespace

void addSettingsCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("settings", "Show, write or insert processing settings");
    command->callback([command] { requireSubcommand(*command); });
    command->footer("Each has its own help: tvmeta settings show --help.");
    const auto options = std::make_shared<Options>();

    CLI::App* show = command->add_subcommand("show", "Show the settings in a photograph or settings file");
    show->add_option("FILE", options->file, "File with a settings packet")->required();
    show->footer("Example:\n"
                 "  tvmeta settings show result.tif");
    show->callback([options] { showSettings(options->file); });

    CLI::App* write = command->add_subcommand("write", "Write a settings file");
    write->add_option("OUT", options->output, "Settings file to write")->required();
    addSettingsOptions(*write, options->settings, true);
    write->footer(methodHelp() + "Example:\n"
                                 "  tvmeta settings write my.xmp --method 'Details Enhancer' \\\n"
                                 "    --set Strength=70 --set Gamma=1.20");
    write->callback([options] { writeSettings(options->output, settingsFrom(options->settings)); });

    CLI::App* insert = command->add_subcommand("insert", "Insert settings into an XMP packet");
    insert->add_option("PACKET", options->file, "File with an XMP packet")->required();
    insert->add_option("-o,--output", options->output, "File to write")->required();
    addSettingsOptions(*insert, options->settings, true);
    insert->footer(methodHelp() + "Example:\n"
                                  "  tvmeta settings insert packet.xmp -o new.xmp \\\n"
                                  "    --method Fusion/Intensive --set Radius=70");
    insert->callback([options] { insertSettings(options->file, settingsFrom(options->settings), options->output); });
}
