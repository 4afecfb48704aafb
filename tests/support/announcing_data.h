#ifndef TESTS_SUPPORT_ANNOUNCING_DATA_H
#define TESTS_SUPPORT_ANNOUNCING_DATA_H

#include <vxclassifier/classifier_data_provider_memory.h>

namespace test {

/// Data as a caller's own class may give them: it says that it has any number of patterns, whatever it holds.
class AnnouncingData : public vxClassifierDataProviderMemory {
public:
    explicit AnnouncingData(long announced, const vxClassifierDataProviderMemory& data = {})
        : vxClassifierDataProviderMemory(data), announced_(announced) {}

    long numPatterns() const override { return announced_; }

private:
    long announced_;
};

} // namespace test

#endif
