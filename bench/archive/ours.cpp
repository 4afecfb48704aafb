#include "bench/archive/archive.h"
#include "bench/our_data.h"
#include "bench/our_tree.h"

#include <vxclassifier/classifier_tool.h>
#include <vxclassifier/classifier_train_params_knn.h>
#include <vxclassifier/platform/archive.h>

namespace bench::archive {

namespace {

using Train = vxClassifierTool (*)(const Source&);

vxClassifierTool withPatterns(const Source& source) {
    vxClassifierTool tool;
    tool.train(ourProvider(ourPatterns(source.rows), numLabels), vxClassifierTrainParamsKNN(5));
    return tool;
}

vxClassifierTool withTree(const Source& source) {
    vxClassifierTool tool;
    tool.train(*ourTree(source.tree));
    return tool;
}

std::vector<unsigned char> stored(vxClassifierTool& tool) {
    vxStoringArchive archive;
    archive || tool;
    archive.finish();
    return archive.bytes();
}

class Storing : public Runner {
public:
    Storing(const SharedSource& source, Train train) : tool_(train(*source)) {}

    void run(std::size_t) override {
        archive_ = std::make_unique<vxStoringArchive>();
        *archive_ || tool_;
        archive_->finish();
    }

private:
    vxClassifierTool tool_;
    std::unique_ptr<vxStoringArchive> archive_; // holds the bytes
};

class Loading : public Runner {
public:
    Loading(const SharedSource& source, Train train) {
        vxClassifierTool tool = train(*source);
        bytes_ = stored(tool);
        run(0);
        if (loaded_ != tool) {
            throw Disagreement("what is loaded is not what was stored");
        }
    }

    void run(std::size_t) override {
        loaded_ = vxClassifierTool();
        vxLoadingArchive archive(bytes_);
        archive || loaded_;
        archive.finish();
    }

private:
    std::vector<unsigned char> bytes_;
    vxClassifierTool loaded_;
};

template <class Made, Train train>
std::unique_ptr<Runner> make(const SharedSource& source) {
    return std::make_unique<Made>(source, train);
}

} // namespace

Contender ours() {
    return {Role::ours,
            "tool",
            &make<Storing, &withPatterns>,
            &make<Loading, &withPatterns>,
            &make<Storing, &withTree>,
            &make<Loading, &withTree>};
}

} // namespace bench::archive
