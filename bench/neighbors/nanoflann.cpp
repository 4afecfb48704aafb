#include "bench/neighbors/neighbors.h"

#include <nanoflann.hpp>

namespace bench::neighbors {

namespace {

/// The stored rows in the form in which nanoflann asks for them.
struct Points {
    const Rows* rows;

    std::size_t kdtree_get_point_count() const { return rows->count; }
    double kdtree_get_pt(std::size_t row, std::size_t column) const { return rows->row(row)[column]; }
    template <class Box>
    bool kdtree_get_bbox(Box&) const {
        return false;
    }
};

/// The number of measurements is known to the compiler, which is the faster of nanoflann's two forms.
template <int size>
class Tree : public Searcher {
public:
    explicit Tree(const std::shared_ptr<const Workload>& workload)
        : workload_(workload), points_{&workload->stored}, tree_(size, points_) {}

    void run(std::size_t turn) override {
        tree_.knnSearch(workload_->query(turn), numNeighbors, rows_.data(), distances_.data());
    }

    Found find(std::size_t query) override {
        run(query);
        Found found{};
        for (std::size_t i = 0; i < found.size(); ++i) {
            found[i] = rows_[i];
        }
        return found;
    }

private:
    using Distance = nanoflann::L2_Simple_Adaptor<double, Points>;

    std::shared_ptr<const Workload> workload_;
    Points points_;
    nanoflann::KDTreeSingleIndexAdaptor<Distance, Points, size> tree_;
    std::array<std::uint32_t, numNeighbors> rows_{};
    std::array<double, numNeighbors> distances_{};
};

std::unique_ptr<Searcher> make(const std::shared_ptr<const Workload>& workload) {
    switch (workload->stored.size) {
    case 4:
        return std::make_unique<Tree<4>>(workload);
    case 16:
        return std::make_unique<Tree<16>>(workload);
    case 64:
        return std::make_unique<Tree<64>>(workload);
    default:
        throw Disagreement("no tree for rows of this size");
    }
}

} // namespace

void addNanoflann(std::vector<Contender>& contenders) {
    contenders.push_back({Role::rival, "nanoflann tree", [](const std::shared_ptr<const Workload>& workload) {
                              std::unique_ptr<Searcher> tree = make(workload);
                              requireAgreement(*workload, *tree, Precision::doubles);
                              return tree;
                          }});
}

} // namespace bench::neighbors
