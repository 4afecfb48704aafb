#include "examples/demo/csv_dataset.h"

#include "examples/demo/csv_fields.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <utility>

namespace demo {

namespace {

/// Where the reading is, for messages.
struct Place {
    const std::string& file;
    long line = 0;

    [[noreturn]] void fail(const std::string& problem) const { throw CsvError(file, line, problem); }
};

/// The next line without its end, which may be LF or CR LF; false at the end of the file.
bool nextLine(std::istream& source, Place& place, std::string& line) {
    if (!std::getline(source, line)) {
        return false;
    }
    ++place.line;
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return true;
}

std::vector<std::string> fieldsOf(const std::string& line, const Place& place) {
    std::optional<std::vector<std::string>> fields = splitCsvLine(line);
    if (!fields) {
        place.fail("a quoted field does not end, or something stands behind its end");
    }
    return *std::move(fields);
}

std::vector<std::string> readHeader(std::istream& source, Place& place) {
    std::string line;
    if (!nextLine(source, place, line)) {
        place.line = 1;
        place.fail("the file is empty; its first line should name the measurements and the label");
    }
    const std::string byteOrderMark = "\xef\xbb\xbf";
    if (line.compare(0, byteOrderMark.size(), byteOrderMark) == 0) {
        line.erase(0, byteOrderMark.size());
    }
    std::vector<std::string> names = fieldsOf(line, place);
    if (names.size() < 2 || names.back() != "label") {
        place.fail("the first line should name at least one measurement, and \"label\" at its end");
    }
    names.pop_back();
    return names;
}

/// Nothing for a missing measurement: an empty field or a question mark.
std::optional<double> measurementOf(const std::string& field, const std::string& name, const Place& place) {
    if (field.empty() || field == "?") {
        return std::nullopt;
    }
    double value = 0.0;
    const char* end = field.data() + field.size();
    const auto [behind, error] = std::from_chars(field.data(), end, value);
    if (error == std::errc::result_out_of_range) {
        place.fail("the measurement " + name + " is too large or too small for a number: '" + field + "'");
    }
    if (error != std::errc() || behind != end || !std::isfinite(value)) {
        place.fail("the measurement " + name + " is not a number: '" + field + "'");
    }
    return value;
}

long labelOf(const std::string& field, const Place& place) {
    std::int32_t label = -1;
    const char* end = field.data() + field.size();
    const auto [behind, error] = std::from_chars(field.data(), end, label);
    if (error != std::errc() || behind != end || label < 0) {
        place.fail("the label is not a whole number from 0 to " +
                   std::to_string(std::numeric_limits<std::int32_t>::max()) + ": '" + field + "'");
    }
    return label;
}

CsvRow rowOf(const std::string& line, const std::vector<std::string>& names, const Place& place) {
    const std::vector<std::string> fields = fieldsOf(line, place);
    if (fields.size() != names.size() + 1) {
        place.fail("there are " + std::to_string(fields.size()) + " fields instead of " +
                   std::to_string(names.size() + 1));
    }
    CsvRow row;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::optional<double> measurement = measurementOf(fields[i], names[i], place);
        row.measurements.push_back(measurement.value_or(0.0));
        if (!measurement) {
            row.missing.push_back(static_cast<long>(i));
        }
    }
    row.label = labelOf(fields.back(), place);
    return row;
}

} // namespace

CsvError::CsvError(const std::string& file, long line, const std::string& problem)
    : std::runtime_error(file + ":" + std::to_string(line) + ": " + problem) {}

CsvDataset readCsvDataset(std::istream& source, const std::string& name) {
    Place place{name};
    CsvDataset dataset;
    dataset.measurementNames = readHeader(source, place);
    std::string line;
    while (nextLine(source, place, line)) {
        dataset.rows.push_back(rowOf(line, dataset.measurementNames, place));
    }
    if (source.bad()) {
        place.fail("the file could not be read further");
    }
    if (dataset.rows.empty()) {
        place.fail("nothing follows the first line");
    }
    return dataset;
}

CsvDataset readCsvDataset(const std::string& file) {
    std::ifstream source(file, std::ios::binary);
    if (!source || std::filesystem::is_directory(file)) {
        throw CsvError(file, 0, "the file cannot be opened");
    }
    return readCsvDataset(source, file);
}

} // namespace demo
