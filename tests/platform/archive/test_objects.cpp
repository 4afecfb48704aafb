#include "tests/platform/archive/test_objects.h"

namespace test {

std::atomic<long> Node::living{0};
std::atomic<long> Stranger::living{0};
std::atomic<long> Note::living{0};

const vx_Instantiator Node::sExemplar(typeid(Node), &Node::make);
const vx_Instantiator Stranger::sExemplar(typeid(Stranger), &Stranger::make);
const vx_Instantiator Note::sExemplar(typeid(Note), &Note::make);

void Node::dispatchSerialize(vxArchive& archive) {
    if (haveVisited(this, sizeof(Node))) {
        return;
    }
    unsigned char version = 0;
    archive || version;
    serialize_(archive, version);
    setVisited(this, sizeof(Node));
}

void Node::serialize_(vxArchive& archive, unsigned char version) {
    if (version != 0) {
        throw vxArchive::UnknownVersion(nullptr, 0);
    }
    vxPersistent::dispatchSerialize(archive);
    archive || value;
    archive || left;
    archive || right;
}

void Note::dispatchSerialize(vxArchive& archive) {
    if (haveVisited(this, sizeof(Note))) {
        return;
    }
    vxPersistent::dispatchSerialize(archive);
    archive || value;
    setVisited(this, sizeof(Note));
}

} // namespace test
