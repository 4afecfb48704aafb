#include "bench/rules/rules.h"

#include <fl/Headers.h>

#include <cmath>
#include <utility>

namespace bench::rules {

namespace {

/// The same rules as an engine: each rule multiplies its memberships, the first one above the threshold is
/// activated, and the output is that rule's number.
class Fuzzylite : public Decider {
public:
    explicit Fuzzylite(SharedWorkload workload) : workload_(std::move(workload)) {
        addInputs();
        addOutput();
        addRules();
        std::string status;
        if (!engine_.isReady(&status)) {
            throw Disagreement(status);
        }
    }

    void run(std::size_t turn) override { last_ = decide(turn); }

    long decide(std::size_t query) override {
        const double* values = workload_->query(query);
        for (std::size_t j = 0; j < numFeatures; ++j) {
            inputs_[j]->setValue(values[j]);
        }
        engine_.process();
        return std::lround(output_->getValue()); // a weighted mean of one value may miss it by a bit
    }

private:
    static std::string term(std::size_t rule) { return 'r' + std::to_string(rule); }
    static std::string feature(std::size_t index) { return 'x' + std::to_string(index); }

    void addInputs() {
        for (std::size_t j = 0; j < numFeatures; ++j) {
            inputs_[j] = new fl::InputVariable(feature(j), -10.0, 20.0); // the engine owns it
            engine_.addInputVariable(inputs_[j]);
            for (std::size_t i = 0; i < numRules; ++i) {
                const Corners& corners = workload_->rules[i][j];
                inputs_[j]->addTerm(
                    new fl::Trapezoid(term(i), corners[0], corners[1], corners[2], corners[3]));
            }
        }
    }

    void addOutput() {
        output_ = new fl::OutputVariable("out", -1.0, static_cast<double>(numRules)); // the engine owns it
        engine_.addOutputVariable(output_);
        output_->setDefuzzifier(new fl::WeightedAverage("TakagiSugeno"));
        output_->setDefaultValue(-1.0);
        for (std::size_t i = 0; i < numRules; ++i) {
            output_->addTerm(new fl::Constant(term(i), static_cast<double>(i)));
        }
    }

    void addRules() {
        auto* block = new fl::RuleBlock; // the engine owns it
        engine_.addRuleBlock(block);
        block->setConjunction(new fl::AlgebraicProduct);
        block->setActivation(new fl::First(1, std::pow(threshold, static_cast<double>(numFeatures))));
        for (std::size_t i = 0; i < numRules; ++i) {
            std::string text = "if ";
            for (std::size_t j = 0; j < numFeatures; ++j) {
                text += (j == 0 ? "" : " and ") + feature(j) + " is " + term(i);
            }
            block->addRule(fl::Rule::parse(text + " then out is " + term(i), &engine_));
        }
    }

    SharedWorkload workload_;
    fl::Engine engine_;
    std::array<fl::InputVariable*, numFeatures> inputs_{};
    fl::OutputVariable* output_ = nullptr;
    volatile long last_ = 0;
};

} // namespace

Contender fuzzylite() {
    nameVersion("fuzzylite", fl::fuzzylite::version());
    return {Role::rival, "fuzzylite",
            [](const SharedWorkload& workload) { return std::make_unique<Fuzzylite>(workload); }};
}

} // namespace bench::rules
