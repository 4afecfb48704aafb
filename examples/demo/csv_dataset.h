#ifndef EXAMPLES_DEMO_CSV_DATASET_H
#define EXAMPLES_DEMO_CSV_DATASET_H

#include <istream>
#include <stdexcept>
#include <string>
#include <vector>

namespace demo {

/// One object: its measurements, which of them are missing (their values are 0), and its category.
struct CsvRow {
    std::vector<double> measurements;
    std::vector<long> missing; // ascending
    long label;                // >= 0
};

/// Labelled measurements as a file holds them; data/README.md describes the form.
struct CsvDataset {
    std::vector<std::string> measurementNames;
    std::vector<CsvRow> rows; // each with as many measurements as there are names
};

/// A line that is not of the form; what() says "file:line: what is wrong".
class CsvError : public std::runtime_error {
public:
    CsvError(const std::string& file, long line, const std::string& problem);
};

/// Reads a whole file. Throws CsvError for the first line that is not of the form, and for a file that cannot
/// be read.
CsvDataset readCsvDataset(const std::string& file);

/// The same from a stream; `name` stands for the file in messages.
CsvDataset readCsvDataset(std::istream& source, const std::string& name);

} // namespace demo

#endif
