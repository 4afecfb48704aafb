#ifndef TESTS_SUPPORT_FAKE_TECHNIQUE_H
#define TESTS_SUPPORT_FAKE_TECHNIQUE_H

#include <vxclassifier/classifier.h>
#include <vxclassifier/classifier_result.h>
#include <vxclassifier/classifier_train_params.h>
#include <vxclassifier/platform/archive.h>

#include <algorithm>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// What a hook throws that was told to fail and not told with what.
struct HookFailure : std::runtime_error {
    explicit HookFailure(const std::string& hook) : std::runtime_error(hook) {}
};

/// One call of a hook: its name and the arguments that it has; the others keep their defaults.
struct HookCall {
    std::string hook;
    const vxClassifierDataProvider* provider = nullptr;
    const vxClassifierTrainParams* params = nullptr;
    const vxFeaturePattern* pattern = nullptr;
    const vxClassifierResult* result = nullptr;
    long label = 0;
    vxDiagObject* diag = nullptr;
    unsigned long flags = 0;
    bool trained = false;     // the classifier's state at the call
    bool paramsAlive = false; // whether `params` had been destroyed by then
};

/// What the fakes write their calls to, and where a test says which hook fails. It must outlive them.
///
/// isTrained_ and the destructors leave no call: the state is asked for at will.
struct HookLog {
    enum class Moment { before, after }; // before or after the hook took effect

    std::vector<HookCall> calls;
    std::string failAt; // the hook that fails, or empty
    Moment failMoment = Moment::before;
    std::function<void()> failure;                 // throws in place of HookFailure
    std::function<void(const HookCall&)> observer; // is shown each call before it fails or takes effect
    std::set<const void*> alive;                   // the parameter objects and classifiers that exist

    /// Lets one hook fail from now on.
    void fail(const std::string& hook, Moment moment = Moment::before) {
        failAt = hook;
        failMoment = moment;
    }

    void clear() {
        calls.clear();
        failAt.clear();
    }

    std::vector<std::string> hooks() const {
        std::vector<std::string> names;
        for (const HookCall& call : calls) {
            names.push_back(call.hook);
        }
        return names;
    }

    /// The only call of this hook.
    const HookCall& only(const std::string& hook) const {
        const auto isHook = [&](const HookCall& call) { return call.hook == hook; };
        if (std::count_if(calls.begin(), calls.end(), isHook) != 1) {
            throw std::logic_error("not exactly one call of " + hook);
        }
        return *std::find_if(calls.begin(), calls.end(), isHook);
    }

    void entered(const HookCall& call) {
        calls.push_back(call);
        if (observer) {
            observer(call);
        }
        reached(call.hook, Moment::before);
    }

    void reached(const std::string& hook, Moment moment) const {
        if (hook != failAt || moment != failMoment) {
            return;
        }
        if (failure) {
            failure();
        }
        throw HookFailure(hook);
    }
};

/// Something that a log knows to exist; not copied along with the object that holds it.
class Presence {
public:
    Presence(HookLog* log, const void* object) : log_(log), object_(object) {
        if (log_ != nullptr) {
            log_->alive.insert(object_);
        }
    }
    ~Presence() {
        if (log_ != nullptr) {
            log_->alive.erase(object_);
        }
    }
    Presence(const Presence&) = delete;
    Presence& operator=(const Presence&) = delete;

private:
    HookLog* log_;
    const void* object_;
};

/// Parameters of a fake technique; each Technique is one of its own. Their value is one number.
///
/// What the library sees as protected is public here, so that tests can call it.
template <int Technique>
class FakeParamsOf : public vxClassifierTrainParams {
public:
    explicit FakeParamsOf(HookLog* log = nullptr, long value = 0)
        : log_(log), value_(value), presence_(log, this) {}
    FakeParamsOf(const FakeParamsOf& other)
        : vxPersistent(), vxRepBase(), vxClassifierTrainParams(other), makesClassifier(other.makesClassifier),
          log_(other.log_), value_(other.value_), presence_(log_, this) {}
    FakeParamsOf& operator=(const FakeParamsOf& other) {
        vxClassifierTrainParams::operator=(other);
        value_ = other.value_;
        return *this;
    }

    static vxPersistent* make() { return new FakeParamsOf; }

    vxPtrHandle<vxClassifierTrainParams> clone() const override;
    bool isEqual_(const vxClassifierTrainParams& other) const override;
    bool isSameTechnique_(const vxClassifierTrainParams& other) const override;
    vx_Classifier* newClassifier_() const override;

    long value() const { return value_; }
    void value(long changed) { value_ = changed; }

    bool makesClassifier = true; // false: newClassifier_ gives null

protected:
    void dispatchSerialize(vxArchive& archive) override {
        if (haveVisited(this, sizeof(FakeParamsOf))) {
            return;
        }
        unsigned char version = 0;
        archive || version;
        vxClassifierTrainParams::dispatchSerialize(archive);
        archive || value_;
        setVisited(this, sizeof(FakeParamsOf));
    }

private:
    void enter(const std::string& hook, const vxClassifierTrainParams* other = nullptr) const {
        if (log_ != nullptr) {
            HookCall call;
            call.hook = hook;
            call.params = other;
            log_->entered(call);
        }
    }

    HookLog* log_;
    long value_;
    Presence presence_;
};

using FakeParams = FakeParamsOf<1>;
using OtherFakeParams = FakeParamsOf<2>;

/// A classifier that records how its hooks are called. Training takes the value of FakeParams over, or 0 for
/// parameters of another class; a run gives whatever resultToGive is.
class FakeClassifier : public vx_Classifier {
public:
    explicit FakeClassifier(HookLog* log = nullptr) : log_(log), presence_(log, this) {}
    FakeClassifier(const FakeClassifier& other)
        : vx_Classifier(other), resultToGive(other.resultToGive), log_(other.log_), trained_(other.trained_),
          learnt_(other.learnt_), presence_(log_, this) {}
    FakeClassifier& operator=(const FakeClassifier& other) {
        vx_Classifier::operator=(other);
        trained_ = other.trained_;
        learnt_ = other.learnt_;
        return *this;
    }

    static vxPersistent* make() { return new FakeClassifier; }

    /// Trained without parameters, as by a way of training that the base knows nothing of.
    void trainManual(long learnt) {
        trained_ = true;
        learnt_ = learnt;
    }

    long learnt() const { return learnt_; }

    vxClassifierResult resultToGive;

    vxPtrHandle<vx_Classifier> clone() const override {
        return vxPtrHandle<vx_Classifier>(new FakeClassifier(*this));
    }

    bool isEquivalent(const vx_Classifier& other) const override {
        const auto* fake = dynamic_cast<const FakeClassifier*>(&other);
        return fake != nullptr && vx_Classifier::isEquivalent(other) && learnt_ == fake->learnt_;
    }

    void train_(const vxClassifierDataProvider& provider, const vxClassifierTrainParams& params) override {
        HookCall call;
        call.provider = &provider;
        call.params = &params;
        learn("train_", call);
    }

    void retrain_(const vxClassifierTrainParams& params) override {
        HookCall call;
        call.params = &params;
        learn("retrain_", call);
    }

    void trainStart_(const vxClassifierTrainParams& params) override {
        HookCall call;
        call.params = &params;
        learn("trainStart_", call);
    }

    void trainIncremental_(const vxFeaturePattern& pattern, long label) override {
        HookCall call;
        call.pattern = &pattern;
        call.label = label;
        enter("trainIncremental_", call);
        ++learnt_;
        leave("trainIncremental_");
    }

    void untrain_() override {
        enter("untrain_");
        trained_ = false;
        learnt_ = 0;
        leave("untrain_");
    }

    bool isTrained_() const override {
        if (log_ != nullptr) {
            log_->reached("isTrained_", HookLog::Moment::before);
        }
        return trained_;
    }

    void checkRunnable_() const override { enter("checkRunnable_"); }

    void run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const override {
        HookCall call;
        call.pattern = &pattern;
        call.result = &result;
        enter("run_", call);
        result = resultToGive;
        leave("run_");
    }

private:
    void recordTrainInputs_(vxDiagObject* diag, unsigned long flags) const override {
        record("recordTrainInputs_", diag, flags);
    }
    void recordTrainDetails_(vxDiagObject* diag, unsigned long flags) const override {
        record("recordTrainDetails_", diag, flags);
    }
    void recordTrainResults_(vxDiagObject* diag, unsigned long flags) const override {
        record("recordTrainResults_", diag, flags);
    }
    void recordRunInputs_(vxDiagObject* diag, unsigned long flags,
                          const vxFeaturePattern& pattern) const override {
        record("recordRunInputs_", diag, flags, &pattern);
    }
    void recordRunDetails_(vxDiagObject* diag, unsigned long flags) const override {
        record("recordRunDetails_", diag, flags);
    }
    void recordRunResults_(vxDiagObject* diag, unsigned long flags, const vxFeaturePattern& pattern,
                           const vxClassifierResult& result) const override {
        record("recordRunResults_", diag, flags, &pattern, &result);
    }

protected:
    void dispatchSerialize(vxArchive& archive) override {
        if (haveVisited(this, sizeof(FakeClassifier))) {
            return;
        }
        unsigned char version = 0;
        archive || version;
        vx_Classifier::dispatchSerialize(archive);
        unsigned char trained = trained_ ? 1 : 0;
        archive || trained;
        trained_ = trained != 0;
        archive || learnt_;
        setVisited(this, sizeof(FakeClassifier));
    }

private:
    void enter(const std::string& hook, HookCall call = HookCall()) const {
        if (log_ != nullptr) {
            call.hook = hook;
            call.trained = trained_;
            call.paramsAlive = log_->alive.count(call.params) != 0;
            log_->entered(call);
        }
    }

    void leave(const std::string& hook) const {
        if (log_ != nullptr) {
            log_->reached(hook, HookLog::Moment::after);
        }
    }

    void learn(const std::string& hook, const HookCall& call) {
        enter(hook, call);
        const auto* params = dynamic_cast<const FakeParams*>(call.params);
        trained_ = true;
        learnt_ = params == nullptr ? 0 : params->value();
        leave(hook);
    }

    void record(const std::string& hook, vxDiagObject* diag, unsigned long flags,
                const vxFeaturePattern* pattern = nullptr, const vxClassifierResult* result = nullptr) const {
        HookCall call;
        call.diag = diag;
        call.flags = flags;
        call.pattern = pattern;
        call.result = result;
        enter(hook, call);
    }

    HookLog* log_;
    bool trained_ = false;
    long learnt_ = 0;
    Presence presence_;
};

template <int Technique>
vxPtrHandle<vxClassifierTrainParams> FakeParamsOf<Technique>::clone() const {
    enter("clone");
    return vxPtrHandle<vxClassifierTrainParams>(new FakeParamsOf(*this));
}

template <int Technique>
bool FakeParamsOf<Technique>::isEqual_(const vxClassifierTrainParams& other) const {
    enter("isEqual_", &other);
    const auto* fake = dynamic_cast<const FakeParamsOf*>(&other);
    return fake != nullptr && value_ == fake->value_;
}

template <int Technique>
bool FakeParamsOf<Technique>::isSameTechnique_(const vxClassifierTrainParams& other) const {
    enter("isSameTechnique_", &other);
    return dynamic_cast<const FakeParamsOf*>(&other) != nullptr;
}

template <int Technique>
vx_Classifier* FakeParamsOf<Technique>::newClassifier_() const {
    enter("newClassifier_");
    return makesClassifier ? new FakeClassifier(log_) : nullptr;
}

// An archive can bring the fakes back; what it makes writes to no log.
inline const vx_Instantiator fakeParamsExemplar(typeid(FakeParams), &FakeParams::make);
inline const vx_Instantiator otherFakeParamsExemplar(typeid(OtherFakeParams), &OtherFakeParams::make);
inline const vx_Instantiator fakeClassifierExemplar(typeid(FakeClassifier), &FakeClassifier::make);

} // namespace test

#endif
