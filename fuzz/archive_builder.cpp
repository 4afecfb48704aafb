#include "fuzz/archive_builder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

namespace fuzz {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
const double specialReals[] = {0.0,    -0.0,  1.0,      -1.0,      0.5,  2.0,         1e-15,
                               1e-300, 1e300, -1e300,   5e-324,    1e9,  2147483648., 1e154,
                               0.25,   1e-8,  infinity, -infinity, 10.0, 0.1,         std::nan("")};
const std::uint32_t specialWholes[] = {0,           1,        2,           3,    0xffffffffU, 0x7fffffffU,
                                       0x80000000U, 0x10000U, 0x7ffffffeU, 100U, 0xfffffffeU, 0x100000U};

/// What a record of a class holds behind its versions. Families: e errors, f patterns, d providers,
/// m metrics, a parameters, c classifiers, p predicates, t trees, y densities, o models.
struct ClassForm {
    const char* name;
    char family;
    int levels;
    const char* form;
};

const ClassForm classes[] = {
    {"vxFeaturePattern", 'f', 2, "vdvt"},           {"vxClassifierDataProviderMemory", 'd', 3, "ssv>fvi"},
    {"vxClassifierTrainParamsKNN", 'a', 3, "i>mC"}, {"vxClassifierTrainParamsBayesian", 'a', 3, "DCFE"},
    {"vxPatternDistanceMetricNorm", 'm', 3, "d"},   {"vxRangePredicate", 'p', 3, "rvi"},
    {"vxValidityPredicate", 'p', 3, "vi"},          {"vxComparisonPredicate", 'p', 3, "ii"},
    {"vxDecisionTreeNode", 't', 3, ">t>t>p"},       {"vxDecisionTreeLeaf", 't', 3, "R"},
    {"vx_ClassifierKNN", 'c', 3, ">a>d"},           {"vx_ClassifierDecisionTree", 'c', 3, ">a>t"},
    {"vx_ClassifierBayesian", 'c', 3, ">aviv>o"},   {"vx_CategoryModelBayesian", 'o', 3, "iivviv>y"},
    {"vx_PDFMultivariateNormal", 'y', 3, "xxi"},    {"vx_PDFBinomial", 'y', 3, "ndd"},
    {"vxClassifierDefs::BadParams", 'e', 5, "s"},   {"vxClassifierDefs::BadIndex", 'e', 5, "s"},
    {"vxClassifierDefs::BadLabel", 'e', 5, "s"},    {"vxClassifierDefs::BadMethod", 'e', 5, "s"},
    {"vxClassifierDefs::NotTrained", 'e', 5, "s"},  {"vxClassifierDefs::NotImplemented", 'e', 5, "s"},
    {"vxClassifierDefs::BadFeatures", 'e', 5, "s"}, {"vxClassifierDefs::InsufficientTrainData", 'e', 5, "s"},
};

/// Forms that are named by one letter, each with a version in front.
const char* valueForm(char letter) {
    switch (letter) {
    case 'r':
        return "dd";
    case 'F':
        return "dvivd";
    case 'C':
        return "dvivivd";
    case 'K':
        return "iddd";
    case 'R':
        return "vKd";
    case 'D':
        return "ivivivivivvi";
    case 'T':
        return ">c";
    default:
        return nullptr;
    }
}

std::size_t classIndex(const std::string& className) {
    const auto* found = std::find_if(std::begin(classes), std::end(classes),
                                     [&](const ClassForm& form) { return form.name == className; });
    return static_cast<std::size_t>(found - std::begin(classes));
}

constexpr int deepest = 6;
constexpr std::size_t mostRecords = 60;

} // namespace

std::uint64_t Choices::number(int size) {
    std::uint64_t value = 0;
    for (int i = 0; i < size; ++i) {
        value |= std::uint64_t{byte()} << (8 * i);
    }
    return value;
}

void ArchiveBuilder::append(const std::string& form) {
    each(payload_, form.c_str(), 0);
}

void ArchiveBuilder::appendPointer(const std::string& className) {
    topLevelPointer(payload_, [&] { return newObject(classIndex(className), 0); });
}

void ArchiveBuilder::appendInPlace(const std::string& className) {
    const ClassForm& form = classes[classIndex(className)];
    versions(payload_, form.levels);
    each(payload_, form.form, 0);
}

template <class Make>
void ArchiveBuilder::topLevelPointer(test::Payload& out, Make make) {
    const std::size_t before = records_.size();
    pending_ = test::Payload();
    const std::uint32_t reference = make();
    out.u32(static_cast<std::uint32_t>(records_.size() - before));
    out.append(pending_.bytes()).u32(reference);
}

/// Null, an object that is there already, or a new one; now and then of another family, or not there.
std::uint32_t ArchiveBuilder::object(char family, int depth) {
    const unsigned kind = choices_.byte();
    if (kind == 0 || depth > deepest || records_.size() >= mostRecords) {
        return 0;
    }
    if (kind == 0xa5U) { // one that does not stand there yet, such as the object that would hold it
        return static_cast<std::uint32_t>(records_.size() + 1 + choices_.below(3));
    }
    const bool any = kind == 1 || family == '*';
    const auto fits = [&](char other) { return any || other == family; };
    if (kind % 3 == 2) {
        std::vector<std::uint32_t> numbers;
        for (const Record& record : records_) {
            if (fits(record.family)) {
                numbers.push_back(record.number);
            }
        }
        if (!numbers.empty()) {
            return numbers[choices_.below(numbers.size())];
        }
    }
    std::vector<std::size_t> fitting;
    for (std::size_t i = 0; i < std::size(classes); ++i) {
        if (fits(classes[i].family)) {
            fitting.push_back(i);
        }
    }
    return newObject(fitting[choices_.below(fitting.size())], depth);
}

std::uint32_t ArchiveBuilder::newObject(std::size_t index, int depth) {
    const ClassForm& form = classes[index];
    test::Payload content;
    versions(content, form.levels);
    each(content, form.form, depth + 1);
    const auto known = classNumbers_.find(index);
    if (known != classNumbers_.end()) {
        pending_.record(known->second, content);
    } else {
        const auto number = static_cast<std::uint32_t>(classNumbers_.size());
        classNumbers_[index] = number;
        pending_.firstRecord(number, form.name, content);
    }
    records_.push_back({form.family, static_cast<std::uint32_t>(records_.size() + 1)});
    return records_.back().number;
}

void ArchiveBuilder::versions(test::Payload& out, int count) {
    for (int i = 0; i < count; ++i) {
        out.byte(0);
    }
    if (choices_.rarely()) {
        out.byte(choices_.byte());
    }
}

void ArchiveBuilder::each(test::Payload& out, const char* form, int depth) {
    while (*form != '\0') {
        form = one(out, form, depth);
    }
}

/// Appends the first of the values of the form and returns the form behind it.
const char* ArchiveBuilder::one(test::Payload& out, const char* form, int depth) {
    const char letter = *form;
    const char* const behind = form + 1;
    switch (letter) {
    case 'i':
    case 'u':
        whole(out);
        return behind;
    case 'n':
        trials(out);
        return behind;
    case 'b':
        out.byte(choices_.byte());
        return behind;
    case 't':
        out.byte(choices_.rarely() ? choices_.byte() : choices_.byte() & 1U);
        return behind;
    case 'd':
        real(out);
        return behind;
    case 's': {
        const std::size_t count = choices_.below(4);
        out.u32(static_cast<std::uint32_t>(count));
        for (std::size_t i = 0; i < count; ++i) {
            out.u32(static_cast<std::uint32_t>(choices_.number(choices_.rarely() ? 4 : 2)));
        }
        return behind;
    }
    case 'v':
        return vectorOf(out, behind, depth);
    case 'x':
        matrix(out);
        return behind;
    case 'E':
        out.byte(0).byte(0);
        each(out, "vdvt", depth);
        return behind;
    case 'h':
        scoreFunction(out);
        return behind;
    case 'U':
        each(out, "vhi", depth);
        return behind;
    case '1':
        each(out, "ddddd", depth);
        return behind;
    case '2':
        each(out, "dddddddddd", depth);
        return behind;
    case '=': {
        const auto* first =
            std::find_if(std::begin(classes), std::end(classes),
                         [&](const ClassForm& candidate) { return candidate.family == behind[0]; });
        versions(out, first->levels);
        each(out, first->form, depth);
        return behind + 1;
    }
    case '>':
        if (depth == 0) {
            topLevelPointer(out, [&] { return object(behind[0], depth); });
        } else {
            out.u32(object(behind[0], depth));
        }
        return behind + 1;
    default:
        version(out);
        each(out, valueForm(letter), depth);
        return behind;
    }
}

const char* ArchiveBuilder::vectorOf(test::Payload& out, const char* form, int depth) {
    version(out);
    const std::size_t count = choices_.below(6);
    out.u32(choices_.rarely() ? static_cast<std::uint32_t>(choices_.number(4))
                              : static_cast<std::uint32_t>(count));
    test::Payload elements;
    const char* behind = form;
    for (std::size_t i = 0; i < count; ++i) {
        behind = one(elements, form, depth);
    }
    if (count == 0) {
        while (*behind == 'v') {
            ++behind;
        }
        behind += *behind == '>' ? 2 : 1;
    }
    out.append(elements.bytes());
    return behind;
}

void ArchiveBuilder::real(test::Payload& out) {
    const unsigned kind = choices_.byte();
    if (kind >= 0xf0U) {
        out.u64(choices_.number(8));
    } else if (kind >= 0x80U) {
        out.real(specialReals[kind % std::size(specialReals)]);
    } else {
        out.real((static_cast<double>(kind) - 16.0) / 4.0);
    }
}

void ArchiveBuilder::whole(test::Payload& out) {
    const unsigned kind = choices_.byte();
    if (kind >= 0xf0U) {
        out.u32(static_cast<std::uint32_t>(choices_.number(4)));
    } else if (kind >= 0x80U) {
        out.u32(specialWholes[kind % std::size(specialWholes)]);
    } else {
        out.u32(kind % 8U);
    }
}

void ArchiveBuilder::trials(test::Payload& out) {
    const unsigned kind = choices_.byte();
    if (kind >= 0xf0U) {
        out.u32(static_cast<std::uint32_t>(choices_.number(4)));
    } else if (kind >= 0xe0U) {
        out.u32(specialWholes[kind % std::size(specialWholes)]);
    } else {
        out.u32(kind);
    }
}

void ArchiveBuilder::matrix(test::Payload& out) {
    version(out);
    const std::size_t shape = choices_.byte();
    const std::uint32_t rows = shape % 4;
    const std::uint32_t columns = rows == 0 ? 0 : 1 + static_cast<std::uint32_t>(shape / 4 % 3);
    if (choices_.rarely()) {
        whole(out);
        whole(out);
    } else {
        out.u32(rows).u32(columns);
    }
    for (std::uint32_t i = 0; i < rows * columns; ++i) {
        real(out);
    }
}

void ArchiveBuilder::scoreFunction(test::Payload& out) {
    static const std::uint32_t tags[] = {5682, 33385, 59820};
    static const char* const forms[] = {"", "1", "2"};
    if (choices_.rarely()) {
        whole(out);
        return;
    }
    const std::size_t kind = choices_.below(3);
    out.u32(tags[kind]);
    each(out, forms[kind], 0);
}

} // namespace fuzz
