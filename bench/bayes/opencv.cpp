#include "bench/bayes/bayes.h"
#include "bench/opencv_rows.h"

#include <opencv2/core.hpp>
#include <opencv2/ml.hpp>

namespace bench::bayes {

namespace {

/// The training data in OpenCV's form.
cv::Ptr<cv::ml::TrainData> trainDataOf(const Workload& workload) {
    cv::setNumThreads(1);
    std::vector<float> values = workload.rows.asFloats();
    std::vector<int> labels;
    for (std::size_t i = 0; i < workload.rows.count; ++i) {
        labels.push_back(static_cast<int>(i % workload.categories));
    }
    const int count = static_cast<int>(workload.rows.count);
    const cv::Mat samples(count, static_cast<int>(workload.rows.size), CV_32F, values.data());
    const cv::Mat responses(count, 1, CV_32S, labels.data());
    return cv::ml::TrainData::create(samples.clone(), cv::ml::ROW_SAMPLE, responses.clone());
}

class OpenCVDecider : public Decider {
public:
    explicit OpenCVDecider(const SharedWorkload& workload)
        : queries_(openCVRows(workload->queries)), model_(cv::ml::NormalBayesClassifier::create()) {
        model_->train(trainDataOf(*workload));
    }

    void run(std::size_t turn) override {
        model_->predictProb(queries_[turn % queries_.size()], decisions_, probabilities_);
    }

    long decide(std::size_t query) override {
        run(query);
        return decisions_.at<int>(0);
    }

private:
    std::vector<cv::Mat> queries_;
    cv::Ptr<cv::ml::NormalBayesClassifier> model_;
    cv::Mat decisions_;
    cv::Mat probabilities_;
};

class OpenCVTrainer : public Runner {
public:
    explicit OpenCVTrainer(const SharedWorkload& workload)
        : data_(trainDataOf(*workload)), model_(cv::ml::NormalBayesClassifier::create()) {}

    void run(std::size_t) override { model_->train(data_); }

private:
    cv::Ptr<cv::ml::TrainData> data_;
    cv::Ptr<cv::ml::NormalBayesClassifier> model_;
};

} // namespace

Contender openCV() {
    nameVersion("OpenCV", CV_VERSION);
    return {Role::rival, "OpenCV",
            [](const SharedWorkload& workload) { return std::make_unique<OpenCVDecider>(workload); }, nullptr,
            [](const SharedWorkload& workload) { return std::make_unique<OpenCVTrainer>(workload); }};
}

} // namespace bench::bayes
