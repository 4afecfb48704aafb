// Stores a value, loads it again, and catches an error of the library by its standard base.

#include <vxclassifier/platform/archive.h>
#include <vxclassifier/platform/range.h>

#include <cstdio>
#include <exception>

int main() {
    vxRange range(-1.5, 2.0);
    vxStoringArchive out;
    out || range;
    out.finish();

    vxRange loaded(0.0, 0.0);
    vxLoadingArchive in(out.bytes());
    in || loaded;
    in.finish();
    if (loaded != range) {
        std::puts("the loaded range differs from the stored one");
        return 1;
    }

    try {
        const unsigned char noArchive[] = {'n', 'o'};
        vxLoadingArchive refused(noArchive, sizeof noArchive);
        std::puts("two bytes were taken for an archive");
        return 1;
    } catch (const std::exception& error) {
        std::printf("refused: %s\n", error.what());
    }
    return 0;
}
