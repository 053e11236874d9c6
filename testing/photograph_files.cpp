// Writes the table of photographs as files, for tests of the tool and of Python: photograph_files DIR.
// DIR/expected.jsonl has a line for each with the values that `tvmeta info --json` must show.
#include "testing/files.h"
#include "testing/photographs_table.h"

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: photograph_files DIR\n";
        return 2;
    }
    const std::string dir = argv[1];
    test::Bytes lines;
    for (const test::Photograph& photo : test::photographs()) {
        test::writeFile(dir + '/' + photo.name, photo.bytes);
        lines += "{\"file\":\"" + photo.name + '"';
        for (const auto& [key, value] : test::expectedFields(photo)) {
            lines += ",\"" + key + "\":" + value;
        }
        lines += "}\n";
    }
    test::writeFile(dir + "/expected.jsonl", lines);
}
