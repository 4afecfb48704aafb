#ifndef VXCLASSIFIER_PLATFORM_ARCHIVE_FILE_H
#define VXCLASSIFIER_PLATFORM_ARCHIVE_FILE_H

#include <vxclassifier/platform/export.h>

#include <string>
#include <vector>

/// Gives the file `path` the content `bytes`, in such a way that at every moment, a crash or a loss of power
/// included, the file is either the old one or the new one, and complete: the bytes go to a temporary file
/// in the same folder, which is flushed to the disk and then takes the place of the old one.
///
/// A file that exists keeps its permission bits, as far as the caller may set them; a new one gets those that
/// the process gives to new files. Where `path` is a symbolic link, the file that it leads to is replaced and
/// the link stays. Several writers at once do not mix their bytes: the last one to finish wins.
///
/// Throws vxArchive::WriteFailed, with the step that failed and the system's reason, if the file could not be
/// written or if it is uncertain whether it has reached the disk. The temporary is removed then, and the old
/// file is untouched unless only the very last step failed, the flushing of the folder: then the new file is
/// in place.
VXCLASSIFIER_API void vfReplaceFile(const std::string& path, const std::vector<unsigned char>& bytes);

/// The content of the file `path`. Throws vxArchive::ReadFailed, with the step that failed and the system's
/// reason, if it cannot be read.
VXCLASSIFIER_API std::vector<unsigned char> vfReadFile(const std::string& path);

#endif
