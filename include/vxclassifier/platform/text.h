#ifndef VXCLASSIFIER_PLATFORM_TEXT_H
#define VXCLASSIFIER_PLATFORM_TEXT_H

#include <vxclassifier/platform/export.h>

#include <string>

/// A whole number in decimal, with a minus sign when it is negative and without grouping, whatever the
/// locale.
VXCLASSIFIER_API std::wstring vfStr(long number);

#endif
