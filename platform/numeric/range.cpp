#include <vxclassifier/platform/range.h>

#include <vxclassifier/platform/archive.h>

vxRange vxRange::FullRange() noexcept {
    return vxRange();
}

vxArchive& operator||(vxArchive& archive, vxRange& range) {
    unsigned char version = 0;
    archive || version;
    if (version != 0) {
        throw vxArchive::UnknownVersion(nullptr, 0);
    }
    archive || range.lower_;
    archive || range.upper_;
    return archive;
}
