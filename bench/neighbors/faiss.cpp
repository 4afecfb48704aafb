#include "bench/neighbors/neighbors.h"

#include <faiss/IndexFlat.h>

#include <omp.h>

namespace bench::neighbors {

namespace {

class Flat : public Searcher {
public:
    explicit Flat(const std::shared_ptr<const Workload>& workload)
        : queries_(workload->queries.asFloats()), numQueries_(workload->queries.count),
          size_(workload->stored.size), index_(static_cast<faiss::Index::idx_t>(size_)) {
        omp_set_num_threads(1);
        const std::vector<float> stored = workload->stored.asFloats();
        index_.add(static_cast<faiss::Index::idx_t>(workload->stored.count), stored.data());
    }

    void run(std::size_t turn) override {
        index_.search(1, queries_.data() + turn % numQueries_ * size_,
                      static_cast<faiss::Index::idx_t>(numNeighbors), distances_.data(), rows_.data());
    }

    Found find(std::size_t query) override {
        run(query);
        Found found{};
        for (std::size_t i = 0; i < found.size(); ++i) {
            found[i] = static_cast<std::size_t>(rows_[i]);
        }
        return found;
    }

private:
    std::vector<float> queries_;
    std::size_t numQueries_;
    std::size_t size_;
    faiss::IndexFlatL2 index_;
    std::array<float, numNeighbors> distances_{};
    std::array<faiss::Index::idx_t, numNeighbors> rows_{};
};

} // namespace

void addFaiss(std::vector<Contender>& contenders) {
    nameVersion("FAISS", std::to_string(FAISS_VERSION_MAJOR) + '.' + std::to_string(FAISS_VERSION_MINOR) +
                             '.' + std::to_string(FAISS_VERSION_PATCH));
    contenders.push_back(searcher<Flat>(Role::rival, "FAISS flat", Precision::floats));
}

} // namespace bench::neighbors
