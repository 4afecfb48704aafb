#include <vxclassifier/feature_score.h>
#include <vxclassifier/platform/archive.h>

#include <memory>
#include <typeinfo>

namespace {

// The numbers that stand for the classes in archives; they never change.
constexpr unsigned long ignoreTag = 5682;
constexpr unsigned long oneSidedTag = 33385;
constexpr unsigned long twoSidedTag = 59820;

template <class Function>
bool isExactly(const vxClsFtSc& function) {
    return typeid(function) == typeid(Function);
}

template <class Function>
void storeTagged(vxArchive& archive, unsigned long tag, vxClsFtSc& function) {
    archive || tag;
    archive || static_cast<Function&>(function);
}

// The handle keeps what it holds until the new object is complete.
template <class Function>
void loadInto(vxArchive& archive, vxPtrHandle<vxClsFtSc>& handle) {
    auto loaded = std::make_unique<Function>();
    archive || *loaded;
    handle.reset(loaded.release());
}

/// Calls `note()` at the end if the archive is loading, also if it ends early: what was read so far stays.
template <class Note>
class OnceLoaded {
public:
    OnceLoaded(const vxArchive& archive, Note note) : isLoading_(archive.isLoading()), note_(note) {}
    ~OnceLoaded() {
        if (isLoading_) {
            note_();
        }
    }
    OnceLoaded(const OnceLoaded&) = delete;
    OnceLoaded& operator=(const OnceLoaded&) = delete;

private:
    bool isLoading_;
    Note note_;
};

void store(vxArchive& archive, vxClsFtSc& function) {
    if (isExactly<vxClassifierFeatureScoreIgnore>(function)) {
        storeTagged<vxClassifierFeatureScoreIgnore>(archive, ignoreTag, function);
    } else if (isExactly<vxClassifierFeatureScoreOneSided>(function)) {
        storeTagged<vxClassifierFeatureScoreOneSided>(archive, oneSidedTag, function);
    } else if (isExactly<vxClassifierFeatureScoreTwoSided>(function)) {
        storeTagged<vxClassifierFeatureScoreTwoSided>(archive, twoSidedTag, function);
    }
}

void load(vxArchive& archive, vxPtrHandle<vxClsFtSc>& handle) {
    unsigned long tag = 0;
    archive || tag;
    switch (tag) {
    case ignoreTag:
        loadInto<vxClassifierFeatureScoreIgnore>(archive, handle);
        break;
    case oneSidedTag:
        loadInto<vxClassifierFeatureScoreOneSided>(archive, handle);
        break;
    case twoSidedTag:
        loadInto<vxClassifierFeatureScoreTwoSided>(archive, handle);
        break;
    default:
        break; // how long the values of an unknown class are, nobody can say
    }
}

} // namespace

vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreIgnore&) {
    return archive;
}

vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreOneSided& function) {
    const OnceLoaded once(archive, [&] { function.noteSoundness_(); });
    return archive || function.x0_ || function.x1_ || function.xc_ || function.y0_ || function.y1_;
}

vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreTwoSided& function) {
    const OnceLoaded once(archive, [&] { function.noteSoundness_(); });
    return archive || function.low_ || function.high_;
}

vxArchive& operator||(vxArchive& archive, vxPtrHandle<vxClsFtSc>& handle) {
    if (archive.isStoring()) {
        store(archive, *handle);
    } else {
        load(archive, handle);
    }
    return archive;
}
