#ifndef EXAMPLES_DEMO_CSV_FIELDS_H
#define EXAMPLES_DEMO_CSV_FIELDS_H

#include <optional>
#include <string>
#include <vector>

namespace demo {

/// Splits one line at its commas. A field in double quotes may hold commas, and quotes if they are doubled;
/// it may not go on in the next line. Nothing if a quote is not closed, or something stands behind a closing
/// one.
std::optional<std::vector<std::string>> splitCsvLine(const std::string& line);

} // namespace demo

#endif
