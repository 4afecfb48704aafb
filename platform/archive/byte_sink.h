#ifndef PLATFORM_ARCHIVE_BYTE_SINK_H
#define PLATFORM_ARCHIVE_BYTE_SINK_H

#include <cstddef>
#include <utility>
#include <vector>

namespace detail {

/// A vector of bytes to which many small pieces are appended: as long as the memory that was prepared lasts,
/// that is a comparison and an addition.
class ByteSink {
public:
    bool hasRoomFor(std::size_t size) const noexcept {
        return size <= static_cast<std::size_t>(end_ - next_);
    }

    /// Prepares memory for `size` more bytes. If what is there does not do, it becomes `capacity` bytes, or
    /// as many as are needed. If there is no memory, nothing has changed.
    void prepare(std::size_t size, std::size_t capacity);

    /// Appends so many bytes, for which there is room, without giving them values. They lie there until
    /// memory is prepared again.
    unsigned char* extend(std::size_t size) noexcept { return std::exchange(next_, next_ + size); }

    std::size_t size() const noexcept { return static_cast<std::size_t>(next_ - bytes_.data()); }
    unsigned char* at(std::size_t offset) noexcept { return bytes_.data() + offset; }

    /// Takes away all but the first `size` bytes, of which there are more.
    void cutTo(std::size_t size) noexcept { next_ = bytes_.data() + size; }

    /// Gives the bytes away.
    std::vector<unsigned char> take() noexcept;

private:
    std::vector<unsigned char> bytes_;
    unsigned char* next_ = nullptr; // in bytes_: behind the appended ones
    unsigned char* end_ = nullptr;  // of bytes_
};

} // namespace detail

#endif
