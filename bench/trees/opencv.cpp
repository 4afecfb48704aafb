#include "bench/opencv_rows.h"
#include "bench/trees/trees.h"

#include <opencv2/core.hpp>
#include <opencv2/ml.hpp>

#include <iomanip>
#include <limits>
#include <sstream>

namespace bench::trees {

namespace {

/// What stands before the nodes in OpenCV's own form of a trained tree.
std::string head() {
    std::ostringstream text;
    const std::size_t size = GrownTree::numMeasurements;
    const auto list = [&](const char* name, std::size_t count, auto value) {
        text << name << ": [ ";
        for (std::size_t i = 0; i < count; ++i) {
            text << (i == 0 ? "" : ", ") << value(i);
        }
        text << " ]\n";
    };
    text << "%YAML:1.0\n---\nformat: 3\nis_classifier: 1\nvar_all: " << size + 1 << "\nvar_count: " << size
         << "\nord_var_count: " << size
         << "\ncat_var_count: 1\ntraining_params:\n   use_surrogates: 0\n   max_categories: 10\n"
            "   regression_accuracy: 0.01\n   max_depth: 32\n   min_sample_count: 1\n"
            "   cross_validation_folds: 0\nglobal_var_idx: 1\n";
    list("var_idx", size, [](std::size_t i) { return i; });
    list("var_type", size + 1, [](std::size_t i) { return i == size ? 1 : 0; });
    list("cat_ofs", 2 * (size - 1), [](std::size_t) { return 0; });
    list("class_labels", static_cast<std::size_t>(GrownTree::numCategories), [](std::size_t i) { return i; });
    list("missing_subst", size + 1, [](std::size_t) { return "0."; });
    return text.str() + "nodes:\n";
}

/// The tree as a text that OpenCV loads. OpenCV lists the nodes as they are grown here: each before its
/// children, the lower values first.
std::string asText(const GrownTree& tree) {
    std::ostringstream text;
    text << std::setprecision(std::numeric_limits<double>::max_digits10) << head();
    for (const GrownNode& node : tree.nodes()) {
        text << "   -\n      depth: " << node.depth << "\n      value: " << (node.isLeaf ? node.label : 0)
             << ".\n      norm_class_idx: " << (node.isLeaf ? node.label : 0) << '\n';
        if (!node.isLeaf) {
            text << "      splits:\n         - { var:" << node.measurement
                 << ", quality:1., le:" << std::scientific << node.threshold << std::defaultfloat << " }\n";
        }
    }
    return text.str();
}

class OpenCV : public Decider {
public:
    explicit OpenCV(const SharedWorkload& workload)
        : queries_(openCVRows(workload->queries)), tree_(cv::ml::DTrees::create()) {
        cv::setNumThreads(1);
        const cv::FileStorage source(asText(workload->tree), cv::FileStorage::READ | cv::FileStorage::MEMORY);
        tree_->read(source.root());
    }

    void run(std::size_t turn) override { last_ = decide(turn); }

    long decide(std::size_t query) override {
        return static_cast<long>(tree_->predict(queries_[query % queries_.size()]));
    }

private:
    std::vector<cv::Mat> queries_;
    cv::Ptr<cv::ml::DTrees> tree_;
    volatile long last_ = 0;
};

} // namespace

Contender openCV() {
    nameVersion("OpenCV", CV_VERSION);
    return {Role::rival, "OpenCV",
            [](const SharedWorkload& workload) { return std::make_unique<OpenCV>(workload); }};
}

} // namespace bench::trees
