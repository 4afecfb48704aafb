#ifndef TESTS_PLATFORM_STATISTICS_REFERENCE_TABLE_H
#define TESTS_PLATFORM_STATISTICS_REFERENCE_TABLE_H

#include "tests/platform/statistics/normal_pdf.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace test {

struct ReferencePoint {
    double logDensity;
    Indices invalid;
    Row values;
};

/// One entry of normal_reference.csv, which scripts/make_normal_reference.py makes and describes.
struct Reference {
    std::string name;
    double number; // condition number of a density, number of samples of data
    Rows rows;     // of data only
    Row mean;
    Row lowerCovariance;
    std::vector<ReferencePoint> points;
};

inline std::vector<std::string> fieldsOf(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, ',');) {
        fields.push_back(field);
    }
    return fields;
}

inline Row numbersOf(const std::vector<std::string>& fields, std::size_t first) {
    Row numbers;
    for (std::size_t i = first; i < fields.size(); ++i) {
        numbers.push_back(std::strtod(fields[i].c_str(), nullptr)); // streams do not read hexadecimal
    }
    return numbers;
}

inline ReferencePoint pointOf(const std::vector<std::string>& fields) {
    ReferencePoint point{std::strtod(fields.at(1).c_str(), nullptr), {}, {}};
    const std::size_t numInvalid = std::stoul(fields.at(2));
    for (std::size_t i = 0; i < numInvalid; ++i) {
        point.invalid.push_back(std::stoi(fields.at(3 + i)));
    }
    point.values = numbersOf(fields, 3 + numInvalid);
    return point;
}

/// The entries of one kind, "density" or "data".
inline std::vector<Reference> references(const std::string& kind) {
    std::ifstream file(NORMAL_REFERENCE);
    std::vector<Reference> found;
    bool isOfKind = false;
    for (std::string line; std::getline(file, line);) {
        const std::vector<std::string> fields = fieldsOf(line);
        const std::string& what = fields.at(0);
        if (what == "density" || what == "data") {
            isOfKind = what == kind;
            if (isOfKind) {
                found.push_back({fields.at(1), std::strtod(fields.at(3).c_str(), nullptr), {}, {}, {}, {}});
            }
        } else if (isOfKind && what == "mean") {
            found.back().mean = numbersOf(fields, 1);
        } else if (isOfKind && what == "covariance") {
            found.back().lowerCovariance = numbersOf(fields, 1);
        } else if (isOfKind && what == "row") {
            found.back().rows.push_back(numbersOf(fields, 1));
        } else if (isOfKind && what == "point") {
            found.back().points.push_back(pointOf(fields));
        }
    }
    return found;
}

} // namespace test

#endif
