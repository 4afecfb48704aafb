#ifndef TESTS_PLATFORM_ARCHIVE_TEST_OBJECTS_H
#define TESTS_PLATFORM_ARCHIVE_TEST_OBJECTS_H

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/persistent.h>
#include <vxclassifier/platform/ptr_handle.h>
#include <vxclassifier/platform/rep_base.h>

#include <atomic>

namespace test {

/// A shared object with a number and two references; counts how many of its kind exist.
class Node : public vxPersistent, public vxRepBase {
public:
    Node() { ++living; }
    explicit Node(long number) : value(number) { ++living; }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    ~Node() override { --living; }

    static vxPersistent* make() { return new Node; }
    void reInit() override { ++completions; }

    long value = 0;
    vxPtrHandle<Node> left;
    vxPtrHandle<Node> right;
    int completions = 0; // how often reInit was called; not stored

    static std::atomic<long> living;

protected:
    void dispatchSerialize(vxArchive& archive) override;
    void serialize_(vxArchive& archive, unsigned char version);

private:
    static const vx_Instantiator sExemplar;
};

/// Another shared object; holds nothing.
class Stranger : public vxPersistent, public vxRepBase {
public:
    Stranger() { ++living; }
    Stranger(const Stranger&) = delete;
    Stranger& operator=(const Stranger&) = delete;
    ~Stranger() override { --living; }

    static vxPersistent* make() { return new Stranger; }

    static std::atomic<long> living;

private:
    static const vx_Instantiator sExemplar;
};

/// An object with a number that no handle can hold.
class Note : public vxPersistent {
public:
    Note() { ++living; }
    explicit Note(long number) : value(number) { ++living; }
    Note(const Note&) = delete;
    Note& operator=(const Note& other) {
        if (isTracked_()) {
            mutating_();
        }
        value = other.value;
        return *this;
    }
    ~Note() override { --living; }

    static vxPersistent* make() { return new Note; }

    long value = 0;

    static std::atomic<long> living;

protected:
    void dispatchSerialize(vxArchive& archive) override;

private:
    static const vx_Instantiator sExemplar;
};

/// A class that was forgotten to be registered.
class Unregistered : public Node {};

/// Exchanges a pointer to any object: stores `in`, or returns what was loaded.
inline vxPersistent* exchangePointer(vxArchive& archive, vxPersistent* in = nullptr) {
    vxPersistent* out = nullptr;
    vxPersistent::serializePointer(archive, in, out);
    return out;
}

} // namespace test

#endif
