#include "examples/demo/csv_dataset.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

demo::CsvDataset read(const std::string& text) {
    std::istringstream source(text);
    return demo::readCsvDataset(source, "set.csv");
}

std::string errorOf(const std::string& text) {
    try {
        read(text);
    } catch (const demo::CsvError& error) {
        return error.what();
    }
    return "no error";
}

} // namespace

TEST(CsvDataset, ReadsNamesMeasurementsAndLabels) {
    const demo::CsvDataset dataset = read("width,weight,label\n1.5,-2e3,0\n0.1,7,2147483647\n");
    EXPECT_EQ(dataset.measurementNames, (std::vector<std::string>{"width", "weight"}));
    ASSERT_EQ(dataset.rows.size(), 2U);
    EXPECT_EQ(dataset.rows[0].measurements, (std::vector<double>{1.5, -2000.0}));
    EXPECT_EQ(dataset.rows[0].label, 0);
    EXPECT_EQ(dataset.rows[1].measurements, (std::vector<double>{0.1, 7.0}));
    EXPECT_EQ(dataset.rows[1].label, 2147483647);
    EXPECT_TRUE(dataset.rows[0].missing.empty());
}

TEST(CsvDataset, TakesAnEmptyFieldAndAQuestionMarkForAMissingMeasurement) {
    const demo::CsvDataset dataset = read("a,b,c,label\n,2,?,1\n");
    EXPECT_EQ(dataset.rows[0].missing, (std::vector<long>{0, 2}));
    EXPECT_EQ(dataset.rows[0].measurements, (std::vector<double>{0.0, 2.0, 0.0}));
}

TEST(CsvDataset, TakesOtherLineEndsAByteOrderMarkAndAMissingLastLineEnd) {
    const demo::CsvDataset dataset = read("\xef\xbb\xbf"
                                          "a,label\r\n1,0\r\n2,1");
    EXPECT_EQ(dataset.measurementNames, std::vector<std::string>{"a"});
    ASSERT_EQ(dataset.rows.size(), 2U);
    EXPECT_EQ(dataset.rows[1].label, 1);
}

TEST(CsvDataset, TakesQuotedFields) {
    const demo::CsvDataset dataset = read("\"width, in \"\"mm\"\"\",label\n\"1.5\",\"3\"\n");
    EXPECT_EQ(dataset.measurementNames, std::vector<std::string>{"width, in \"mm\""});
    EXPECT_EQ(dataset.rows[0].measurements, std::vector<double>{1.5});
    EXPECT_EQ(dataset.rows[0].label, 3);
}

TEST(CsvDataset, ReportsEveryMalformedLineWithFileAndLine) {
    const std::string largest = "2147483647";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "set.csv:1: the file is empty; its first line should name the measurements and the label"},
        {"a,b\n1,0\n",
         "set.csv:1: the first line should name at least one measurement, and \"label\" at its end"},
        {"label\n0\n",
         "set.csv:1: the first line should name at least one measurement, and \"label\" at its end"},
        {"\n", "set.csv:1: the first line should name at least one measurement, and \"label\" at its end"},
        {"a,label\n", "set.csv:1: nothing follows the first line"},
        {"a,label\n1,0\n2\n", "set.csv:3: there are 1 fields instead of 2"},
        {"a,label\n1,2,0\n", "set.csv:2: there are 3 fields instead of 2"},
        {"a,label\n1,0\n\n", "set.csv:3: there are 1 fields instead of 2"},
        {"a,label\n1,0,\n", "set.csv:2: there are 3 fields instead of 2"},
        {"a,label\nx,0\n", "set.csv:2: the measurement a is not a number: 'x'"},
        {"a,label\n1.5mm,0\n", "set.csv:2: the measurement a is not a number: '1.5mm'"},
        {"a,label\n 1,0\n", "set.csv:2: the measurement a is not a number: ' 1'"},
        {"a,label\n1 ,0\n", "set.csv:2: the measurement a is not a number: '1 '"},
        {"a,label\n+1,0\n", "set.csv:2: the measurement a is not a number: '+1'"},
        {"a,label\nnan,0\n", "set.csv:2: the measurement a is not a number: 'nan'"},
        {"a,label\ninf,0\n", "set.csv:2: the measurement a is not a number: 'inf'"},
        {"a,label\n1e999,0\n",
         "set.csv:2: the measurement a is too large or too small for a number: '1e999'"},
        {"a,label\n1,\n", "set.csv:2: the label is not a whole number from 0 to " + largest + ": ''"},
        {"a,label\n1,-1\n", "set.csv:2: the label is not a whole number from 0 to " + largest + ": '-1'"},
        {"a,label\n1,1.0\n", "set.csv:2: the label is not a whole number from 0 to " + largest + ": '1.0'"},
        {"a,label\n1,2147483648\n",
         "set.csv:2: the label is not a whole number from 0 to " + largest + ": '2147483648'"},
        {"a,label\n\"1,0\n", "set.csv:2: a quoted field does not end, or something stands behind its end"},
        {"a,label\n\"1\"2,0\n", "set.csv:2: a quoted field does not end, or something stands behind its end"},
    };
    for (const auto& [text, message] : cases) {
        EXPECT_EQ(errorOf(text), message) << text;
    }
}

TEST(CsvDataset, ReportsAFileThatCannotBeRead) {
    for (const std::string file : {"no such folder/set.csv", "."}) {
        try {
            demo::readCsvDataset(file);
            FAIL() << "no error";
        } catch (const demo::CsvError& error) {
            EXPECT_EQ(error.what(), file + ":0: the file cannot be opened");
        }
    }
}
