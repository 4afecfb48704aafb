#include "bench/neighbors/neighbors.h"
#include "bench/opencv_rows.h"

#include <opencv2/core.hpp>
#include <opencv2/ml.hpp>

namespace bench::neighbors {

namespace {

class OpenCV : public Searcher {
public:
    explicit OpenCV(const std::shared_ptr<const Workload>& workload)
        : queries_(openCVRows(workload->queries)), search_(cv::ml::KNearest::create()) {
        cv::setNumThreads(1);
        search_->setDefaultK(static_cast<int>(numNeighbors));
        search_->setIsClassifier(true);
        search_->setAlgorithmType(cv::ml::KNearest::BRUTE_FORCE);
        train(*workload);
    }

    void run(std::size_t turn) override {
        search_->findNearest(queries_[turn % queries_.size()], static_cast<int>(numNeighbors), results_,
                             votes_, distances_);
    }

    /// OpenCV tells the labels of the neighbours; here each row is a label of its own, which single precision
    /// holds up to 2^24.
    Found find(std::size_t turn) override {
        run(turn);
        Found found{};
        for (std::size_t i = 0; i < found.size(); ++i) {
            found[i] = static_cast<std::size_t>(votes_.at<float>(0, static_cast<int>(i)));
        }
        return found;
    }

private:
    void train(const Workload& workload) {
        std::vector<float> stored = workload.stored.asFloats();
        const int count = static_cast<int>(workload.stored.count);
        const int size = static_cast<int>(workload.stored.size);
        std::vector<float> labels;
        for (int i = 0; i < count; ++i) {
            labels.push_back(static_cast<float>(i));
        }
        search_->train(cv::Mat(count, size, CV_32F, stored.data()), cv::ml::ROW_SAMPLE,
                       cv::Mat(count, 1, CV_32F, labels.data()));
    }

    std::vector<cv::Mat> queries_;
    cv::Ptr<cv::ml::KNearest> search_;
    cv::Mat results_;
    cv::Mat votes_;
    cv::Mat distances_;
};

} // namespace

void addOpenCV(std::vector<Contender>& contenders) {
    nameVersion("OpenCV", CV_VERSION);
    contenders.push_back(searcher<OpenCV>(Role::rival, "OpenCV", Precision::floats));
}

} // namespace bench::neighbors
