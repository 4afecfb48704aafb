#include <vxclassifier/category_model.h>

#include "platform/archive/class_level.h"

vx_CategoryModel::vx_CategoryModel() noexcept = default;
vx_CategoryModel::vx_CategoryModel(const vx_CategoryModel&) noexcept = default;
vx_CategoryModel& vx_CategoryModel::operator=(const vx_CategoryModel&) noexcept = default;
vx_CategoryModel::~vx_CategoryModel() = default;

bool vx_CategoryModel::operator==(const vx_CategoryModel& other) const noexcept {
    return categoryLabel_ == other.categoryLabel_ && numMeasurements_ == other.numMeasurements_;
}

void vx_CategoryModel::dispatchSerialize(vxArchive& archive) {
    detail::exchangeLevel(archive, this, [&](unsigned char version) { serialize_(archive, version); });
}

void vx_CategoryModel::serialize_(vxArchive& archive, unsigned char version) {
    detail::requireVersionZero(version);
    vxPersistent::dispatchSerialize(archive);
    archive || categoryLabel_;
    archive || numMeasurements_;
}
