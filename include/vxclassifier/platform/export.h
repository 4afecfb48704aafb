#ifndef VXCLASSIFIER_PLATFORM_EXPORT_H
#define VXCLASSIFIER_PLATFORM_EXPORT_H

// Marks what the shared library exports; everything else is compiled with hidden visibility.
#define VXCLASSIFIER_API __attribute__((visibility("default")))

#endif
