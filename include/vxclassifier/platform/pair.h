#ifndef VXCLASSIFIER_PLATFORM_PAIR_H
#define VXCLASSIFIER_PLATFORM_PAIR_H

/// Two values of one type.
///
/// Initial state: two value-initialised members, or the given ones. Ownership and threads: as any plain
/// value.
template <class T>
struct vxPair {
    vxPair() : first(), second() {}
    vxPair(const T& firstValue, const T& secondValue) : first(firstValue), second(secondValue) {}

    friend bool operator==(const vxPair& a, const vxPair& b) {
        return a.first == b.first && a.second == b.second;
    }
    friend bool operator!=(const vxPair& a, const vxPair& b) { return !(a == b); }

    T first;
    T second;
};

#endif
