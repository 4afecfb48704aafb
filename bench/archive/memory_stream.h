#ifndef BENCH_ARCHIVE_MEMORY_STREAM_H
#define BENCH_ARCHIVE_MEMORY_STREAM_H

#include <cstddef>
#include <streambuf>
#include <vector>

namespace bench::archive {

/// Appends to a vector: the least that a stream in memory has to do, so that what is measured is the archive.
class Sink : public std::streambuf {
public:
    explicit Sink(std::vector<char>& bytes) : bytes_(bytes) {}

protected:
    std::streamsize xsputn(const char* data, std::streamsize count) override {
        bytes_.insert(bytes_.end(), data, data + count);
        return count;
    }

    int_type overflow(int_type character) override {
        bytes_.push_back(traits_type::to_char_type(character));
        return character;
    }

private:
    std::vector<char>& bytes_;
};

/// Reads a vector in place.
class View : public std::streambuf {
public:
    explicit View(std::vector<char>& bytes) {
        setg(bytes.data(), bytes.data(), bytes.data() + static_cast<std::ptrdiff_t>(bytes.size()));
    }
};

} // namespace bench::archive

#endif
