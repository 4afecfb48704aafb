#include "examples/demo/csv_fields.h"

#include <cstddef>

namespace demo {

namespace {

/// Reads a quoted field from its opening quote on; `place` is left behind the closing one. Nothing if there
/// is none.
std::optional<std::string> quotedField(const std::string& line, std::size_t& place) {
    std::string field;
    for (++place; place < line.size(); ++place) {
        if (line[place] != '"') {
            field.push_back(line[place]);
        } else if (place + 1 < line.size() && line[place + 1] == '"') {
            field.push_back(line[place++]);
        } else {
            ++place;
            return field;
        }
    }
    return std::nullopt;
}

std::string plainField(const std::string& line, std::size_t& place) {
    const std::size_t first = place;
    place = line.find(',', first);
    if (place == std::string::npos) {
        place = line.size();
    }
    return line.substr(first, place - first);
}

} // namespace

std::optional<std::vector<std::string>> splitCsvLine(const std::string& line) {
    std::vector<std::string> fields;
    std::size_t place = 0;
    while (true) {
        if (place < line.size() && line[place] == '"') {
            const std::optional<std::string> field = quotedField(line, place);
            if (!field || (place < line.size() && line[place] != ',')) {
                return std::nullopt;
            }
            fields.push_back(*field);
        } else {
            fields.push_back(plainField(line, place));
        }
        if (place == line.size()) {
            return fields;
        }
        ++place; // the comma
    }
}

} // namespace demo
