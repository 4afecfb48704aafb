// Prints evaluated scores of three typical score functions as CSV; scripts/draw_feature_scores.py draws them.
//
// Columns: the shape, the name of a point (empty for the points in between), the value x, its score.

#include <vxclassifier/feature_score.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <string>

namespace {

constexpr int end = 10;
constexpr int stepsPerUnit = 8; // a power of two, so that every place is exact

/// The named values of a function.
using Marks = std::map<std::string, double>;

void printRow(const char* shape, const std::string& name, double x, double score) {
    std::printf("%s,%s,%.17g,%.17g\n", shape, name.c_str(), x, score);
}

void print(const char* shape, const vxClsFtSc& function, const Marks& marks) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const auto& [name, x] : marks) {
        printRow(shape, name, x, function.score(x));
    }
    for (int i = 0; i <= end * stepsPerUnit; ++i) {
        const double x = static_cast<double>(i) / stepsPerUnit;
        // The neighbours on both sides show on which side of a jump its place belongs.
        for (const double near : {std::nextafter(x, -infinity), x, std::nextafter(x, infinity)}) {
            printRow(shape, "", near, function.score(near));
        }
    }
}

Marks marksOf(const vxClassifierFeatureScoreOneSided& function) {
    return {{"x0", function.x0()}, {"x1", function.x1()}, {"xc", function.xc()}};
}

} // namespace

int main() {
    vxClassifierFeatureScoreOneSided rising;
    rising.init(2.0, 5.0, 8.0, 0.25, 0.875);
    vxClassifierFeatureScoreOneSided falling;
    falling.init(8.0, 5.0, 2.0, 0.25, 0.875);
    vxClassifierFeatureScoreTwoSided both;
    both.init(1.0, 3.0, 5.0, 9.0, 7.0, 5.0, 0.125, 1.0, 0.25, 0.75);

    std::printf("shape,name,x,score\n");
    print("rising", rising, marksOf(rising));
    print("falling", falling, marksOf(falling));
    Marks marks = marksOf(both.Low());
    for (const auto& [name, x] : marksOf(both.High())) {
        marks[name + "h"] = x;
    }
    print("two-sided", both, marks);
    return 0;
}
