#include "output/csv.h"

std::string csvRecord(std::span<const std::string> fields) {
    std::string record;
    for (const std::string& field : fields) {
        record += &field == &fields.front() ? "" : ",";
        if (field.find_first_of(",\"\r\n") == std::string::npos) {
            record += field;
            continue;
        }
        record += '"';
        for (const char c : field) {
            record += c == '"' ? "\"\"" : std::string(1, c);
        }
        record += '"';
    }
    return record + "\r\n";
}
