# Flags of this project's own targets; nothing here reaches a user of the library.
add_library(vxclassifier_project_options INTERFACE)
target_compile_options(
    vxclassifier_project_options
    INTERFACE -Wall
              -Wextra
              -Wpedantic
              -Wconversion
              -Wsign-conversion
              -Wshadow
              -Wnon-virtual-dtor
              -Woverloaded-virtual
              -Wold-style-cast
              -Wcast-align
              -Wcast-qual
              -Wundef
              -Wformat=2
              -Wsuggest-override
              $<$<BOOL:${VXCLASSIFIER_WARNINGS_AS_ERRORS}>:-Werror>
              # Published results keep every bit on every machine: no fused multiply-add, no reassociation.
              -ffp-contract=off
              -fno-fast-math)
