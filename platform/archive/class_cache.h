#ifndef PLATFORM_ARCHIVE_CLASS_CACHE_H
#define PLATFORM_ARCHIVE_CLASS_CACHE_H

#include <vxclassifier/platform/persistent.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace detail {

/// Keeps what was found out about the classes met last. Archives hold many objects of few classes, one after
/// the other, and the language's own ways to ask an object for its class compare or hash names.
///
/// A class is known by its dispatch table, to which an object points with its first word. It says more than
/// the class: while an object is constructed as a part of another one, it has a table of its own, since its
/// bases may lie elsewhere.
template <class Value>
class ClassCache {
public:
    /// What `findOut()` returned for an earlier object of the same class, or returns for this one.
    template <class FindOut>
    Value get(const vxPersistent& object, FindOut findOut) {
        const void* table = dispatchTableOf(object);
        Entry& entry = entries_[slotOf(table)];
        if (entry.table != table) {
            entry.value = findOut();
            entry.table = table;
        }
        return entry.value;
    }

private:
    struct Entry {
        const void* table = nullptr;
        Value value{};
    };

    static const void* dispatchTableOf(const vxPersistent& object) noexcept {
        const void* table = nullptr;
        std::memcpy(&table, static_cast<const void*>(&object), sizeof table);
        return table;
    }

    static std::size_t slotOf(const void* table) noexcept {
        const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(table));
        return static_cast<std::size_t>((bits * 0x9e3779b97f4a7c15U) >> (64 - slotBits));
    }

    static constexpr unsigned slotBits = 4;
    Entry entries_[std::size_t{1} << slotBits];
};

} // namespace detail

#endif
