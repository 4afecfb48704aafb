#ifndef TESTS_CLASTOOL_BAYES_FAKE_DENSITY_H
#define TESTS_CLASTOOL_BAYES_FAKE_DENSITY_H

#include "platform/archive/class_level.h"
#include "tests/clastool/bayes/record.h"

#include <vxclassifier/category_model_bayesian.h>
#include <vxclassifier/classifier_defs.h>
#include <vxclassifier/probability_density_function.h>

#include <functional>
#include <vector>

namespace test {

/// A density that remembers what it is given and answers what it is told to.
class FakeDensity : public vx_ProbabilityDensityFunction {
public:
    explicit FakeDensity(double answerToGive = 0.0) : answer(answerToGive) {}

    static vxPersistent* make() { return new FakeDensity; }

    double logValue(const vxFeaturePattern& pattern) const override {
        asked.push_back(pattern);
        if (failure) {
            failure();
        }
        return answer;
    }
    bool isEquivalent(const vx_ProbabilityDensityFunction& other) const override {
        const auto* fake = dynamic_cast<const FakeDensity*>(&other);
        return fake != nullptr && answer == fake->answer;
    }
    void updateWithData(const std::vector<vxFeaturePattern>& patterns) override {
        learnt.push_back(patterns);
        if (failure) {
            failure();
        }
    }
    void clear() override { learnt.clear(); }

    double answer;
    std::function<void()> failure; // what logValue and updateWithData throw
    mutable std::vector<vxFeaturePattern> asked;
    std::vector<std::vector<vxFeaturePattern>> learnt;

protected:
    void dispatchSerialize(vxArchive& archive) override {
        ::detail::exchangeLevel(archive, this, [&](unsigned char) {
            vx_ProbabilityDensityFunction::dispatchSerialize(archive);
            archive || answer;
        });
    }
};

inline const vx_Instantiator fakeDensityExemplar(typeid(FakeDensity), &FakeDensity::make);

/// A model with any content, which only an archive can bring.
inline void fillModel(vx_CategoryModelBayesian& model, long label, long numMeasurements,
                      const std::vector<std::vector<long>>& sets,
                      const std::vector<vxPersistent*>& densities) {
    const Bytes sealed = recordOf([&](Record& record) {
        record.versions({0, 0, 0}).number(label).number(numMeasurements).sets(sets).pointers(densities);
    });
    load(sealed, model);
}

inline vxPtrHandle<vx_CategoryModel> modelOf(long label, long numMeasurements,
                                             const std::vector<std::vector<long>>& sets,
                                             const std::vector<vxPersistent*>& densities) {
    vxPtrHandle<vx_CategoryModelBayesian> model(new vx_CategoryModelBayesian);
    fillModel(*model, label, numMeasurements, sets, densities);
    return model;
}

} // namespace test

#endif
