#ifndef VXCLASSIFIER_FEATURE_SCORE_H
#define VXCLASSIFIER_FEATURE_SCORE_H

#include <vxclassifier/platform/export.h>
#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/platform/rep_base.h>

class vxArchive;

namespace detail {
class SoundScore;
}

/// Says how well one feature value fits: a score from 0 to 1, or the mark -1, by which a rule leaves the
/// feature out (docs/rule-tables.md has a drawing of the shapes).
///
/// A caller may derive functions of its own. They work in rules like the library's, but an archive does not
/// know them: see `operator||` for handles below.
///
/// Initial state: that of the derived class.
///
/// Ownership: shared through vxPtrHandle<vxClsFtSc>. Copying copies no reference count.
///
/// Threads: `score`, `clone` and comparisons may run on several threads while nobody modifies the object.
class VXCLASSIFIER_API vxClsFtSc : public vxRepBase {
public:
    ~vxClsFtSc() override;

    /// The score of one value. What it throws is up to the derived class.
    virtual double score(double x) const = 0;

    /// A new copy, which the caller owns; never null.
    virtual vxClsFtSc* clone() const = 0;

    /// Whether the other object is of the same class, to the letter, and holds the same values.
    virtual bool operator==(const vxClsFtSc& other) const = 0;
    bool operator!=(const vxClsFtSc& other) const { return !(*this == other); }

protected:
    vxClsFtSc() noexcept;
    vxClsFtSc(const vxClsFtSc&) noexcept;
    vxClsFtSc& operator=(const vxClsFtSc&) noexcept;
};

/// The function for a feature that does not matter to a rule.
///
/// Initial state: it has only one. Ownership and threads: as for vxClsFtSc.
class VXCLASSIFIER_API vxClassifierFeatureScoreIgnore : public vxClsFtSc {
public:
    vxClassifierFeatureScoreIgnore() noexcept;
    vxClassifierFeatureScoreIgnore(const vxClassifierFeatureScoreIgnore&) noexcept;
    vxClassifierFeatureScoreIgnore& operator=(const vxClassifierFeatureScoreIgnore&) noexcept;
    ~vxClassifierFeatureScoreIgnore() override;

    /// -1 for every value, NaN included.
    double score(double x) const override;
    vxClsFtSc* clone() const override;
    bool operator==(const vxClsFtSc& other) const override;
};

/// A ramp, a plateau and a cut-off: the score is y0 up to x0, runs straight to y1 at x1, stays y1 up to and
/// including xc, and is 0 beyond xc. With x0 <= x1 <= xc the shape is read from left to right (rising form),
/// otherwise from right to left (falling form).
///
/// Initial state: x0 = 0, x1 = 1, xc = 1, y0 = 1, y1 = 0.
///
/// Ownership and threads: as for vxClsFtSc.
class VXCLASSIFIER_API vxClassifierFeatureScoreOneSided : public vxClsFtSc {
public:
    vxClassifierFeatureScoreOneSided() noexcept;
    vxClassifierFeatureScoreOneSided(const vxClassifierFeatureScoreOneSided&) noexcept;
    vxClassifierFeatureScoreOneSided& operator=(const vxClassifierFeatureScoreOneSided&) noexcept;
    ~vxClassifierFeatureScoreOneSided() override;

    /// Sets all five values. Throws vxClassifierDefs::BadParams, and changes nothing, when y0 or y1 is not
    /// within [0, 1] or when x1 does not lie between x0 and xc (either may be the larger one, and all may be
    /// equal).
    void init(double x0, double x1, double xc, double y0, double y1);

    double x0() const noexcept { return x0_; } ///< where the ramp begins
    double x1() const noexcept { return x1_; } ///< where the ramp ends and the plateau begins
    double xc() const noexcept { return xc_; } ///< the last value of the plateau
    double y0() const noexcept { return y0_; } ///< the score at x0 and on its far side
    double y1() const noexcept { return y1_; } ///< the score of the plateau

    /// These three store without a check, so that the values can be moved one by one; `score` checks them.
    void x0(double value) noexcept {
        x0_ = value;
        noteSoundness_();
    }
    void x1(double value) noexcept {
        x1_ = value;
        noteSoundness_();
    }
    void xc(double value) noexcept {
        xc_ = value;
        noteSoundness_();
    }

    /// These two throw vxClassifierDefs::BadParams, and change nothing, for a value not within [0, 1].
    void y0(double value);
    void y1(double value);

    /// The score of one value. Throws vxClassifierDefs::BadParams when x1 does not lie between x0 and xc.
    ///
    /// On the ramp it is (x1 * y0 - x0 * y1 - (y0 - y1) * x) / (x1 - x0), rounded operation by operation in
    /// this order. The differences cancel when the ramp is short and far from 0, so the score is off by up
    /// to about 1e-15 times the larger of |x0| and |x1|, divided by |x1 - x0|.
    ///
    /// NaN gives NaN in the rising form and 0 in the falling form.
    double score(double x) const override;
    vxClsFtSc* clone() const override;

    /// Two values count as different when one is less than the other, so NaN counts as equal to everything.
    bool operator==(const vxClsFtSc& other) const override;

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive,
                                                  vxClassifierFeatureScoreOneSided& function);
    friend class detail::SoundScore;

    void noteSoundness_() noexcept;

    // Nothing holds for the x values: the setters and loading store them unchecked. The y values lie within
    // [0, 1] unless they were loaded.
    double x0_ = 0.0;
    double x1_ = 1.0;
    double xc_ = 1.0;
    double y0_ = 1.0;
    double y1_ = 0.0;
    bool isSound_ = true; // whether x1 lies between x0 and xc
};

/// Two one-sided functions side by side: the high one scores the values from the smallest of its own x values
/// on, the low one the values below that. A rising low part and a falling high part make a trapezoid; other
/// combinations are allowed.
///
/// Initial state: both parts as vxClassifierFeatureScoreOneSided begins. They overlap, so `score` throws
/// until the x values are set.
///
/// Ownership and threads: as for vxClsFtSc.
class VXCLASSIFIER_API vxClassifierFeatureScoreTwoSided : public vxClsFtSc {
public:
    vxClassifierFeatureScoreTwoSided() noexcept;
    vxClassifierFeatureScoreTwoSided(const vxClassifierFeatureScoreTwoSided&) noexcept;
    vxClassifierFeatureScoreTwoSided& operator=(const vxClassifierFeatureScoreTwoSided&) noexcept;
    ~vxClassifierFeatureScoreTwoSided() override;

    /// Sets all ten values: first the x values of both parts, then the y values. Throws
    /// vxClassifierDefs::BadParams, and changes nothing, when an x value of the low part is greater than the
    /// smallest one of the high part, or when one of the parts refuses its values.
    void init(double x0, double x1, double xc, double x0h, double x1h, double xch, double y0, double y1,
              double y0h, double y1h);

    /// The parts, for reading; valid as long as this object.
    const vxClassifierFeatureScoreOneSided& Low() const noexcept { return low_; }
    const vxClassifierFeatureScoreOneSided& High() const noexcept { return high_; }

    double x0() const noexcept { return low_.x0(); }
    double x1() const noexcept { return low_.x1(); }
    double xc() const noexcept { return low_.xc(); }
    double y0() const noexcept { return low_.y0(); }
    double y1() const noexcept { return low_.y1(); }
    double x0h() const noexcept { return high_.x0(); }
    double x1h() const noexcept { return high_.x1(); }
    double xch() const noexcept { return high_.xc(); }
    double y0h() const noexcept { return high_.y0(); }
    double y1h() const noexcept { return high_.y1(); }

    /// These six store without a check; `score` checks them.
    void x0(double value) noexcept {
        low_.x0(value);
        noteSoundness_();
    }
    void x1(double value) noexcept {
        low_.x1(value);
        noteSoundness_();
    }
    void xc(double value) noexcept {
        low_.xc(value);
        noteSoundness_();
    }
    void x0h(double value) noexcept {
        high_.x0(value);
        noteSoundness_();
    }
    void x1h(double value) noexcept {
        high_.x1(value);
        noteSoundness_();
    }
    void xch(double value) noexcept {
        high_.xc(value);
        noteSoundness_();
    }

    /// These four throw vxClassifierDefs::BadParams, and change nothing, for a value not within [0, 1].
    void y0(double value);
    void y1(double value);
    void y0h(double value);
    void y1h(double value);

    /// The score of one value. Throws vxClassifierDefs::BadParams when x1 does not lie between x0 and xc in
    /// one of the parts, or when an x value of the low part is greater than the smallest one of the high
    /// part.
    double score(double x) const override;
    vxClsFtSc* clone() const override;
    bool operator==(const vxClsFtSc& other) const override;

private:
    friend VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive,
                                                  vxClassifierFeatureScoreTwoSided& function);
    friend class detail::SoundScore;

    void noteSoundness_() noexcept;

    vxClassifierFeatureScoreOneSided low_;
    vxClassifierFeatureScoreOneSided high_;
    bool isSound_ = false; // whether both parts are, and the low one does not reach into the high one
};

/// Exchanges nothing.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreIgnore& function);
/// Exchanges x0, x1, xc, y0, y1. What is loaded is not checked; if the archive ends early, the object keeps
/// the values read so far.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreOneSided& function);
/// Exchanges the low part, then the high part, like the function before.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxClassifierFeatureScoreTwoSided& function);

/// Exchanges a function of any of the library's classes: a number that stands for the class, then its values.
///
/// Storing throws vxBadPointer for a null handle, and writes nothing at all for an object of any other class,
/// derived ones included; an archive with such an object in it cannot be read back in step.
///
/// Loading puts a new object into the handle. A number that stands for no class, or an archive that ends
/// early, leaves the handle as it was.
VXCLASSIFIER_API vxArchive& operator||(vxArchive& archive, vxPtrHandle<vxClsFtSc>& handle);

#endif
