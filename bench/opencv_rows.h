#ifndef BENCH_OPENCV_ROWS_H
#define BENCH_OPENCV_ROWS_H

#include "bench/data.h"

#include <opencv2/core.hpp>

#include <vector>

namespace bench {

/// The rows as OpenCV asks for them: a matrix of one row for each, in single precision.
inline std::vector<cv::Mat> openCVRows(const Rows& rows) {
    std::vector<cv::Mat> made;
    for (std::size_t i = 0; i < rows.count; ++i) {
        cv::Mat row(1, static_cast<int>(rows.size), CV_32F);
        for (std::size_t j = 0; j < rows.size; ++j) {
            row.at<float>(0, static_cast<int>(j)) = static_cast<float>(rows.row(i)[j]);
        }
        made.push_back(row);
    }
    return made;
}

} // namespace bench

#endif
