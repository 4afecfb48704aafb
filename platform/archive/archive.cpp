#include <vxclassifier/platform/archive.h>

#include "platform/archive/archive_frame.h"
#include "platform/archive/loading_core.h"
#include "platform/archive/persistent_access.h"
#include "platform/archive/storing_core.h"

#include <ostream>
#include <utility>

void detail::ArchiveAccess::fail(const vxArchive& archive) noexcept {
    if (archive.storing_ != nullptr) {
        archive.storing_->fail();
    } else {
        archive.loading_->fail();
    }
}

bool detail::isLoading(const vxArchive& archive) noexcept {
    return archive.isLoading();
}

vxArchive& vxArchive::operator||(long& value) {
    detail::guarded(*this, [&] {
        if (storing_ != nullptr) {
            storing_->putSigned(value);
        } else {
            value = loading_->getSigned();
        }
    });
    return *this;
}

vxArchive& vxArchive::operator||(unsigned long& value) {
    detail::guarded(*this, [&] {
        if (storing_ != nullptr) {
            storing_->putUnsigned(value);
        } else {
            value = loading_->getUnsigned();
        }
    });
    return *this;
}

vxArchive& vxArchive::operator||(double& value) {
    detail::guarded(*this, [&] {
        if (storing_ != nullptr) {
            storing_->putDouble(value);
        } else {
            value = loading_->getDouble();
        }
    });
    return *this;
}

vxArchive& vxArchive::operator||(std::wstring& value) {
    detail::guarded(*this, [&] {
        if (storing_ != nullptr) {
            storing_->putText(value);
        } else {
            value = loading_->getText();
        }
    });
    return *this;
}

vxArchive& operator||(vxArchive& archive, unsigned char& value) {
    detail::guarded(archive, [&] {
        if (detail::StoringCore* core = detail::ArchiveAccess::storing(archive)) {
            core->putByte(value);
        } else {
            value = detail::ArchiveAccess::loading(archive)->getByte();
        }
    });
    return archive;
}

vxStoringArchive::vxStoringArchive() : vxStoringArchive(std::make_unique<detail::StoringCore>(), nullptr) {}

vxStoringArchive::vxStoringArchive(std::ostream& destination)
    : vxStoringArchive(std::make_unique<detail::StoringCore>(), &destination) {}

vxStoringArchive::vxStoringArchive(std::unique_ptr<detail::StoringCore> core,
                                   std::ostream* destination) noexcept
    : vxArchive(*core), core_(std::move(core)), destination_(destination) {}

vxStoringArchive::~vxStoringArchive() = default;

void vxStoringArchive::finish() {
    std::vector<unsigned char> sealed = core_->finish();
    if (destination_ == nullptr) {
        bytes_ = std::move(sealed);
        return;
    }
    destination_->write(reinterpret_cast<const char*>(sealed.data()),
                        static_cast<std::streamsize>(sealed.size()));
    destination_->flush();
    if (!*destination_) {
        throw WriteFailed(L"The archive could not be written.");
    }
}

const std::vector<unsigned char>& vxStoringArchive::bytes() const noexcept {
    return bytes_;
}

vxLoadingArchive::vxLoadingArchive(const void* bytes, std::size_t size)
    : vxLoadingArchive(
          std::make_unique<detail::LoadingCore>(static_cast<const unsigned char*>(bytes), size)) {}

vxLoadingArchive::vxLoadingArchive(const std::vector<unsigned char>& bytes)
    : vxLoadingArchive(bytes.data(), bytes.size()) {}

vxLoadingArchive::vxLoadingArchive(std::istream& source)
    : vxLoadingArchive(std::make_unique<detail::LoadingCore>(detail::readFramed(source))) {}

vxLoadingArchive::vxLoadingArchive(std::unique_ptr<detail::LoadingCore> core) noexcept
    : vxArchive(*core), core_(std::move(core)) {}

vxLoadingArchive::~vxLoadingArchive() = default;

void vxLoadingArchive::finish() {
    core_->finish();
}
