#include <vxclassifier/platform/text.h>

std::wstring vfStr(long number) {
    return std::to_wstring(number);
}
